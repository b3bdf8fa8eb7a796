#pragma once

#include <QString>
#include <QStringList>

struct Visit;

/// The note in a visit's `ca` row. Several stations write it; nobody's text goes unseen. A failing statement is a
/// PlatformError.

/// As it stands in the row, blanks and all; null without a row or a note.
QString RawNote(const Visit& visit);

/// What became of a note that was to be stored.
struct NoteStored
{
    enum Outcome {
        NoRow,  ///< The visit has none, and none was to be made.
        Stored, ///< It stands in the place of what it was begun from.
        Joined, ///< Another station has changed the note meanwhile: it stands behind theirs.
        NoRoom, ///< The same, but both together are longer than the column: theirs stays as it was.
    };

    Outcome outcome = NoRow;
    QString raw;    ///< What stands in the row now.
    QString theirs; ///< What the other station had written.
};

/// Puts a note in the place of the one that it was begun from, or that this station has stored since: one of `bases`,
/// as `RawNote` gave them. One statement compares and changes. `addsRow` makes a row where the visit has none.
NoteStored StoreNote(const Visit& visit, const QString& typed, const QStringList& bases, bool addsRow);

/// The note of the visit's row as `RawNote` gives it; a row without one is added where the visit has none.
QString NoteOfAddedRow(const Visit& visit);

/// Adds a `ca` row with that note where the visit has none. False when it has one.
bool AddVisitRow(const Visit& visit, const QString& note);
