#pragma once

#include "screenparts/TextDraft.h"

struct FindingsRecordFields;
class FindingsSheet;

/// What is typed into a report and not stored outlives the program, and is offered when the report is opened again.
class FindingsDraft : public QObject
{
    Q_OBJECT

public:
    FindingsDraft(const FindingsRecordFields& record, const FindingsSheet& sheet, QObject* parent);

    /// The sheet holds the texts of the record from now on: while another one comes in, it still holds those before.
    void NoteShown();
    /// Looks now, not with the next second.
    void Check() { m_draft.Check(); }
    void End() { m_draft.End(); }
    /// Keeps the sheet's texts under the report's name: whoever is asked about them next has seen what was stored.
    void Keep() const;

    /// A text that an earlier run left of the record, and its operator wants back; nothing without one. One that he
    /// doesn't want is gone.
    std::optional<TextDraft::Draft> Wanted() const;
    /// That text stands on the sheet.
    void TakeUp(const TextDraft::Draft& draft);

private:
    std::optional<TextDraft::Draft> Unsaved() const;
    TextDraft::Draft Present() const;

    const FindingsRecordFields& m_record;
    const FindingsSheet& m_sheet;
    QString m_shownReport; ///< Whose texts the sheet holds.
    TextDraft m_draft{[this] { return Unsaved(); }, this};
};
