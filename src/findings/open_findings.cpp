#include "findings/open_findings.h"

#include "contracts/fpSpread.h"
#include "contracts/StatusPanels.h"
#include "findings/findings_record.h"
#include "findings/frmCapSogyon.h"
#include "frame/services.h"
#include "screenparts/fill_routines.h"
#include "screenparts/VisitPictures.h"
#include "session/VisitContext.h"

using namespace Qt::StringLiterals;

namespace {

void PrepareRecord(FindingsRecordFields& record, const FindingsOrigin& origin)
{
    const Visit visit = *origin.pictures.Shown();
    ClearFindingsRecord(record);
    record.Chart = visit.chart;
    record.Yuhyung = visit.yuhyung;
    record.Jinchal = VisitContext.Jinchal;
    record.Suname = origin.panels.Text(PanelSuname);
    record.Sex = origin.panels.Text(PanelSex);
    record.Nai = origin.panels.Text(PanelAge);
    record.Phone = origin.panels.Text(PanelTel);
    record.Jumin = origin.panels.Text(PanelJumin);
    record.Address = origin.panels.Text(PanelAddress);
    record.Ymd = visit.ymd;
    record.Etc = visit.etc;
    size_t slot = 0;
    for (const auto& [number, path] : origin.pictures.Chosen()) {
        if (slot == record.PicNo.size())
            break;
        record.PicPath[slot] = path;
        record.PicNo[slot] = number;
        ++slot;
    }
}

bool IsOfVisit(const FindingsRecordFields& record, const Visit& visit)
{
    return record.Chart == visit.chart && record.Ymd == visit.ymd && record.Etc == visit.etc;
}

/// The text on the screen is another report's: it is stored or let go before this one comes.
bool IsUnsavedTextSettled(const FindingsRecordFields& record, frmCapSogyon& screen)
{
    const QString question = u"%1님의 저장하지 않은 소견이 있습니다. 저장하시겠습니까?"_s.arg(record.Suname);
    const Answer answer = AskYesNoCancel(question);
    return answer == Answer::No || (answer == Answer::Yes && screen.StoreText());
}

} // namespace

void OpenFindings(const FindingsOrigin& origin)
{
    // A box that is ticked counts as well.
    if (origin.pictures.Grid().DataRowCnt() == 0 || !origin.pictures.Shown())
        return;
    auto* open = static_cast<frmCapSogyon*>(FindForm(QString::fromUtf16(frmCapSogyon::FormName)));
    if (open != nullptr && (open->HasUnsavedText() || open->IsBusy())) {
        open->BringUp();
        if (open->IsBusy() || IsOfVisit(FindingsRecord, *origin.pictures.Shown()) ||
            !IsUnsavedTextSettled(FindingsRecord, *open))
            return;
    }
    FindingsRecordRollback rollback(FindingsRecord);
    PrepareRecord(FindingsRecord, origin);
    if (open != nullptr)
        open->OpenRecord();
    frmCapSogyon& screen = Form<frmCapSogyon>();
    rollback.Keep();
    screen.BringUp();
    screen.OfferDraft();
}
