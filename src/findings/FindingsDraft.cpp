#include "findings/FindingsDraft.h"

#include "contracts/desktop.h"
#include "findings/findings_record.h"
#include "findings/findings_rows.h"
#include "findings/FindingsSheet.h"
#include "frame/components.h"
#include "frame/services.h"

using namespace Qt::StringLiterals;

namespace {

/// By its number, or, for a report that has no row yet, by its visit: another one can get its number.
QStringList DraftNames(const FindingsRecordFields& record)
{
    const QString ofVisit = TextDraft::NameOf({u"report"_s, record.Chart, record.Ymd, record.Etc});
    if (!record.Stored)
        return {ofVisit};
    return {TextDraft::NameOf({u"report"_s, record.Yeonno}), ofVisit};
}

/// Tells the record's report from others.
QString MarkOf(const FindingsRecordFields& record)
{
    return TextDraft::NameOf({record.Yeonno, record.Chart, record.Ymd, record.Etc});
}

} // namespace

FindingsDraft::FindingsDraft(const FindingsRecordFields& record, const FindingsSheet& sheet, QObject* parent)
    : QObject(parent), m_record(record), m_sheet(sheet)
{
}

void FindingsDraft::NoteShown()
{
    m_shownReport = MarkOf(m_record);
}

/// With the stored texts that it was written over, where the report has a row.
TextDraft::Draft FindingsDraft::Present() const
{
    QJsonObject content{{u"chart"_s, m_record.Chart},    {u"date"_s, m_record.Ymd},
                        {u"section"_s, m_record.Etc},    {u"findings"_s, m_sheet.Findings()},
                        {u"remark"_s, m_sheet.Remark()}, {u"blank"_s, m_sheet.IsBlank()}};
    if (const std::optional<FindingsTexts> stored = StoredFindingsTexts(m_record)) {
        content.insert(u"number"_s, m_record.Yeonno);
        content.insert(u"storedFindings"_s, stored->findings);
        content.insert(u"storedRemark"_s, stored->remark);
    }
    return {DraftNames(m_record).first(), content};
}

std::optional<TextDraft::Draft> FindingsDraft::Unsaved() const
{
    if (m_shownReport != MarkOf(m_record))
        return m_draft.Present();
    return m_sheet.HasOtherText(m_record) ? std::optional(Present()) : std::nullopt;
}

void FindingsDraft::Keep() const
{
    TextDraft::Keep(Present());
}

std::optional<TextDraft::Draft> FindingsDraft::Wanted() const
{
    for (const QString& name : DraftNames(m_record)) {
        const std::optional<QJsonObject> content = TextDraft::Find(name);
        if (!content)
            continue;
        const bool isStored = content->value(u"findings"_s).toString() == m_record.Sogyon &&
                              content->value(u"remark"_s).toString() == m_record.Bigo;
        if (!isStored && AskYesNo(u"저장하지 않은 소견이 있습니다. 다시 불러올까요?"_s))
            return TextDraft::Draft{name, *content};
        // A program that is being ended hasn't asked.
        if (!UseService<Desktop>().EndIsRequested())
            TextDraft::Remove(name);
    }
    return std::nullopt;
}

void FindingsDraft::TakeUp(const TextDraft::Draft& draft)
{
    m_draft.TakeUp(draft);
    m_draft.Check();
}
