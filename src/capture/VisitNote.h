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
    std::optional<TypedNote> Typed(const Visit& visit) const;
    /// Nobody has typed for the visit: what is stored now is shown. Throws PlatformError.
    void ShowPresent(const Visit& visit);
    /// What has become of a note with a picture: a typed one that is stored counts as such, another one is shown.
    /// Gives what the operator is to hear of it.
    QString ShowStored(const Visit& visit, const StillFiling::Note& note);
    /// The same for one that was typed. Where it stands whole, the box holds nothing of its own any more; what a column
    /// has cut goes on counting as typed, and what another station has written stands in front of it.
    QString ShowTyped(const Visit& visit, const QString& text, const NoteStored& stored, bool tellsCut);

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
        QString base;
        bool touched = false;
        bool loaded = false;
    };

    bool IsInBox(const Visit& visit) const;
    void ShowUntouched(const Visit& visit, const QString& raw);
    /// The text for a visit in the box, or kept aside, becomes that one.
    void Replace(const Visit& visit, const QString& text, const QString& base, bool touched);

    std::optional<TextDraft::Draft> UnsavedDraft() const;
    void LookForDraft();
    void setOffered(const std::optional<TextDraft::Draft>& draft);

    NoteBox& m_box;
    const DraftIsThere m_draftIsThere;
    std::optional<TextDraft::Draft> m_offered;
    TextDraft m_draft{[this] { return UnsavedDraft(); }, nullptr};
    QString m_toldOf;             ///< Another station's note that leaves no room for the own one.
    std::optional<Aside> m_aside; ///< The visit's own text while a history line has the box.
};
