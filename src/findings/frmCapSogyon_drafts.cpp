#include "contracts/desktop.h"
#include "findings/findings_record.h"
#include "findings/findings_rows.h"
#include "findings/FindingsBox.h"
#include "findings/frmCapSogyon.h"
#include "frame/components.h"
#include "frame/services.h"

using namespace Qt::StringLiterals;

namespace {

/// By its number, or, for a report that has no row yet, by its visit: another one can get its number.
QStringList DraftNames()
{
    const FindingsRecordFields& record = FindingsRecord;
    const QString ofVisit = TextDraft::NameOf({u"report"_s, record.Chart, record.Ymd, record.Etc});
    if (!record.Stored)
        return {ofVisit};
    return {TextDraft::NameOf({u"report"_s, record.Yeonno}), ofVisit};
}

} // namespace

QString frmCapSogyon::MarkOfRecord()
{
    const FindingsRecordFields& record = FindingsRecord;
    return TextDraft::NameOf({record.Yeonno, record.Chart, record.Ymd, record.Etc});
}

/// With the stored texts that it was written over, where the report has a row.
std::optional<TextDraft::Draft> frmCapSogyon::UnsavedDraft() const
{
    // While another report comes in, the boxes still hold the one before.
    if (m_shownReport != MarkOfRecord())
        return m_draft.Present();
    return HasUnsavedText() ? std::optional(DraftOfBoxes()) : std::nullopt;
}

TextDraft::Draft frmCapSogyon::DraftOfBoxes() const
{
    QJsonObject content{{u"chart"_s, FindingsRecord.Chart}, {u"date"_s, FindingsRecord.Ymd},
                        {u"section"_s, FindingsRecord.Etc}, {u"findings"_s, m_txtSogyon->Text()},
                        {u"remark"_s, m_txtBigo->Text()},   {u"blank"_s, m_blank}};
    if (const std::optional<FindingsTexts> stored = StoredFindingsTexts()) {
        content.insert(u"number"_s, FindingsRecord.Yeonno);
        content.insert(u"storedFindings"_s, stored->findings);
        content.insert(u"storedRemark"_s, stored->remark);
    }
    return {DraftNames().first(), content};
}

void frmCapSogyon::OfferDraft()
{
    if (IsUnloaded())
        return;
    for (const QString& name : DraftNames()) {
        const std::optional<QJsonObject> content = TextDraft::Find(name);
        if (!content)
            continue;
        const bool isStored = content->value(u"findings"_s).toString() == FindingsRecord.Sogyon &&
                              content->value(u"remark"_s).toString() == FindingsRecord.Bigo;
        const bool isWanted = !isStored && AskYesNo(u"저장하지 않은 소견이 있습니다. 다시 불러올까요?"_s);
        if (isWanted) {
            TakeUpDraft({name, *content});
            return;
        }
        // A program that is being ended hasn't asked.
        if (!UseService<Desktop>().EndIsRequested())
            TextDraft::Remove(name);
    }
}

void frmCapSogyon::TakeUpDraft(const TextDraft::Draft& draft)
{
    if (draft.content.value(u"blank"_s).toBool())
        SogyonClear();
    m_txtSogyon->setText(draft.content.value(u"findings"_s).toString());
    m_txtBigo->setText(draft.content.value(u"remark"_s).toString());
    // What has been stored since by another station is met at the next save.
    ExpectFindingsTexts(
        {draft.content.value(u"storedFindings"_s).toString(), draft.content.value(u"storedRemark"_s).toString()});
    m_draft.TakeUp(draft);
    m_draft.Check();
}
