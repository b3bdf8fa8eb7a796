#pragma once

#include "contracts/ado.h"

#include <QString>

class PlatformError;

/// Asks the database for the table, and lets the table keeper make it when it is missing and `create` says so. True
/// when the table is there, or its making was asked for, whether or not it worked: why it didn't is then in `fault`.
/// The connection may be another one afterwards.
bool EnsureTable(ConnectionPointer& connection, const QString& extra, const QString& table, bool create,
                 QString* fault = nullptr);

/// A clinic whose tables come from an earlier release goes on without those of the station's own that it lacks; who
/// looks after it hears of each sentence once, with what to do. Any thread.
void NoteWithoutTable(const QString& sentence, const PlatformError& error);

/// A text as a column of so many characters holds it: without blanks at its ends, and with no half of a letter at its
/// end.
QString FittingColumn(const QString& text, qsizetype characters);
