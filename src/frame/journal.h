#pragma once

#include "contracts/Journal.h"

#include <functional>

/// What happens, in the journal: device, database and share lost and back, rows that wait, repairs, and each fault that
/// the operator is shown. A line tells the chart, but no name, and of a driver's text, which may quote values, its
/// number alone. A program without a journal drops them. Any thread.
namespace journal {

/// The visit's chart, which stands on each line from here on, and the folder whose paths may stand there.
void setContext(const QString& chart, const QString& captureRoot);

void Note(Journal::Severity severity, const QString& what);
/// A message as the operator was shown it, if it tells of a fault.
void NoteShown(const QString& message);

/// A fault that nobody is shown. In a program without a journal it is one of the toolkit's warnings.
void NoteFault(const QString& text);

/// Does a step whose fault keeps nobody from going on: it is noted. False then.
bool NotingFaults(const std::function<void()>& step);

/// The part of a message that may stand in the journal: its first line, without paths outside the capture root, and the
/// error number of the driver's text behind it.
QString Reduced(const QString& message, const QString& captureRoot);

} // namespace journal
