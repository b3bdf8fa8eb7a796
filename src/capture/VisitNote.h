#pragma once

#include "filing/StillFiling.h"
#include "screenparts/TextDraft.h"

#include <optional>

class NoteBox;

/// Keeps the visit's own note apart from the notes of history lines that share its box, and decides what is stored.
class VisitNote
{
public:
    /// Hears whether there is a note that an earlier run didn't store, and that can come back.
    using DraftIsThere = std::function<void(bool isThere)>;

    VisitNote(NoteBox& box, DraftIsThere draftIsThere) : m_box(box), m_draftIsThere(std::move(draftIsThere)) {}

    /// Shows the stored note of the visit as it stands now; what was typed and not stored is gone. Throws PlatformError
    /// when it can't be read: the box then stays closed.
    void LoadForVisit();
    /// Closes the box for a section whose note is about to be loaded.
    void AwaitVisit();
    /// The note of the visit that is awaited won't come.
    void FailVisit();
    /// Shows the note of a history line, read-only, with the visit's own text kept aside. The visit's own line leaves
    /// the box as it is, but for bringing its own text back.
    void ShowHistoryNote(const Visit& visit);
    /// Brings the visit's own text back into the box.
    void BringBack();

    /// The operator's own text, when the box holds one for that visit, with what is still being composed.
    std::optional<QString> TypedNote(const Visit& visit) const;
    /// The note to store for a visit: the typed one; else the stored one, read afresh and shown. Throws PlatformError
    /// when that read fails.
    QString NoteToStore(const Visit& visit);
    /// A note has been stored with a picture: a typed one counts as stored, another one is shown.
    void ShowStored(const Visit& visit, const StillFiling::Note& note);

    /// What became of a note that was to be stored.
    struct Kept
    {
        bool hasRow = false; ///< A visit without a picture has no row: its note waits in the box for the first one.
        int wanted = 0;      ///< Characters that were to be stored, without blanks around them.
        int stored = 0;      ///< Characters that the column has taken.

        bool IsWhole() const { return hasRow && stored >= wanted; }
    };
    /// Compares the text with what has been read back of it, null without a row. When it is whole, the box holds
    /// nothing of its own any more; otherwise the text in the box goes on counting as typed.
    Kept CheckStored(const Visit& visit, const QString& text, const QString& stored);

    /// The note that an earlier run didn't store comes back into the box, as typed, in front of what is typed there.
    void TakeUpDraft();
    /// The screen closes: what was typed and not stored is let go.
    void End();

    /// The visit's row is gone: the text in the box, if it is that visit's own, is stored nowhere now.
    void RowIsGone(const Visit& visit);

private:
    struct Aside
    {
        Visit visit;
        QString text;
        bool touched = false;
        bool loaded = false;
    };

    bool IsInBox(const Visit& visit) const;
    void ShowUntouched(const Visit& visit, const QString& stored);

    std::optional<TextDraft::Draft> UnsavedDraft() const;
    void LookForDraft();
    void setOffered(const std::optional<TextDraft::Draft>& draft);

    NoteBox& m_box;
    const DraftIsThere m_draftIsThere;
    std::optional<TextDraft::Draft> m_offered;
    TextDraft m_draft{[this] { return UnsavedDraft(); }, nullptr};
    std::optional<Aside> m_aside; ///< The visit's own text while a history line has the box.
};
