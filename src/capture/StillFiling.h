#pragma once

#include "capture/PendingRows.h"
#include "visit/Visit.h"

#include <functional>
#include <memory>

class NumberClaim;

/// Files pictures of a visit: number, file, rows. Knows no screen. Several stations may file into one visit at the same
/// time; no number is taken twice and no file is ever overwritten.
class StillFiling
{
public:
    /// What is to be stored as the visit's note with a picture.
    struct Note
    {
        QString text;
        bool typed = false; ///< The operator's own text of this screen, not one read from the store.
    };
    /// Asked right before the rows are written; may throw. Without `mayAsk` the database isn't asked: an untyped note
    /// is then empty.
    using NoteSource = std::function<Note(const Visit&, bool mayAsk)>;

    struct Filed
    {
        int number = 0;
        /// Empty when the rows are stored. Otherwise why not, for the operator: the file is safe, the rows wait.
        QString rowsFault;
        /// What else the operator is to be told: rows of earlier pictures that the server refuses, a disk that reports
        /// faults.
        QStringList tidings;
    };

    /// A picture whose file and rows are safe.
    struct Safe
    {
        Visit visit;
        int number = 0;
        Note note;           ///< Stored with it.
        bool waited = false; ///< Its rows had to wait; it is not the picture that is being filed.
    };
    using SafeListener = std::function<void(const Safe&)>;

    /// `note` is asked for any visit, also for those whose rows were left over by an earlier run.
    StillFiling(NoteSource note, SafeListener safe) : m_note(std::move(note)), m_safe(std::move(safe)) {}

    /// Files one picture, after the rows that wait. Throws PlatformError when no file could be written; nothing is left
    /// behind then.
    Filed File(const Visit& visit, const QByteArray& picture);

    /// Writes the rows that wait. Those that the server refuses keep no others from their turn; gives a text for the
    /// operator for each that it hasn't refused before. Throws DatabaseAway when the others have to wait on.
    QStringList WritePending();
    /// A picture that waits has been deleted: its entry and its claim go.
    void Forget(const Visit& visit, int number);
    PendingRows& Pending() { return m_pending; }

private:
    struct Placed
    {
        int number = 0;
        std::unique_ptr<NumberClaim> claim;
        QString fault; ///< The file stands, but the disk reported a fault.
    };

    /// `fault` tells why the database doesn't answer; while it is empty the database is asked.
    Placed PlaceFile(const Visit& visit, const QByteArray& picture, QString& fault) const;
    PendingRows::Outcome WriteRows(const PendingRows::Entry& entry);

    NoteSource m_note;
    SafeListener m_safe;
    PendingRows m_pending;
};
