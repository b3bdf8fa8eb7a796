#pragma once

#include "capture/StillFiling.h"

#include <optional>

class NoteBox;

/// Keeps the visit's own note apart from the notes of history lines that share its box, and decides what is stored.
class VisitNote
{
public:
    explicit VisitNote(NoteBox& box) : m_box(box) {}

    /// Shows the stored note of the visit as it stands now; what was typed and not stored is gone. Throws PlatformError
    /// when it can't be read: the box then stays closed.
    void LoadForVisit();
    /// Closes the box for a section whose note is about to be loaded.
    void AwaitVisit();
    /// Shows the note of a history line, read-only, with the visit's own text kept aside. The visit's own line leaves
    /// the box as it is, but for bringing its own text back.
    void ShowHistoryNote(const QString& ymd, const QString& etc, const QString& yearFolder);
    /// Brings the visit's own text back into the box.
    void BringBack();

    /// The note to store for a visit: the typed text when the box holds one for it, else the stored one, read afresh
    /// and shown. Throws PlatformError when that read fails.
    StillFiling::Note NoteToStore(const CaptureVisit& visit);
    /// The text has been stored as the visit's note: the box holds nothing of its own any more.
    void MarkStored(const CaptureVisit& visit, const QString& text);

private:
    struct Kept
    {
        QString ymd;
        QString etc;
        QString text;
        bool touched = false;
        bool loaded = false;
    };

    NoteBox& m_box;
    std::optional<Kept> m_kept;
};
