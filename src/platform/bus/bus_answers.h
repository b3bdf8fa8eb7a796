#pragma once

#include <QString>

/// True when a message bus at that address takes a connection and answers within that time. Asked before the toolkit
/// connects: it waits for a bus without a limit, and on a thread that the input method needs, too.
bool BusAnswers(const QString& address, int patienceMs = 2000);

QString SystemBusAddress();
