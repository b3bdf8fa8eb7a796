#pragma once

#include <QStringView>

struct ActSource;

/// Who acts in this process, under the program's name: the machine's name, the Linux user, and the one behind sudo.
ActSource ActSourceHere(QStringView program);
