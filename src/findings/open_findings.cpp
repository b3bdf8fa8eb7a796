#include "findings/open_findings.h"

#include "contracts/fpSpread.h"
#include "contracts/StatusPanels.h"
#include "findings/findings_record.h"
#include "findings/frmCapSogyon.h"
#include "frame/services.h"
#include "screenparts/fill_routines.h"
#include "screenparts/VisitPictures.h"
#include "visit/VisitContext.h"

using namespace Qt::StringLiterals;

namespace {

void PrepareRecord(const FindingsOrigin& origin)
{
    const Visit visit = *origin.pictures.Shown();
    ClearFindingsRecord();
    FindingsRecord.Chart = visit.chart;
    FindingsRecord.Yuhyung = visit.yuhyung;
    FindingsRecord.Jinchal = VisitContext.Jinchal;
    FindingsRecord.Suname = origin.panels.Text(PanelSuname);
    FindingsRecord.Sex = origin.panels.Text(PanelSex);
    FindingsRecord.Nai = origin.panels.Text(PanelAge);
    FindingsRecord.Phone = origin.panels.Text(PanelTel);
    FindingsRecord.Jumin = origin.panels.Text(PanelJumin);
    FindingsRecord.Address = origin.panels.Text(PanelAddress);
    FindingsRecord.Ymd = visit.ymd;
    FindingsRecord.Etc = visit.etc;
    size_t slot = 0;
    for (const auto& [number, path] : origin.pictures.Chosen()) {
        if (slot == FindingsRecord.PicNo.size())
            break;
        FindingsRecord.PicPath[slot] = path;
        FindingsRecord.PicNo[slot] = number;
        ++slot;
    }
}

bool IsOfVisit(const Visit& visit)
{
    return FindingsRecord.Chart == visit.chart && FindingsRecord.Ymd == visit.ymd && FindingsRecord.Etc == visit.etc;
}

/// The text on the screen is another report's: it is stored or let go before this one comes.
bool IsUnsavedTextSettled(frmCapSogyon& screen)
{
    const QString question = u"%1님의 저장하지 않은 소견이 있습니다. 저장하시겠습니까?"_s.arg(FindingsRecord.Suname);
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
        if (open->IsBusy() || IsOfVisit(*origin.pictures.Shown()) || !IsUnsavedTextSettled(*open))
            return;
    }
    FindingsRecordRollback rollback;
    PrepareRecord(origin);
    if (open != nullptr)
        open->OpenRecord();
    frmCapSogyon& screen = Form<frmCapSogyon>();
    rollback.Keep();
    screen.BringUp();
    screen.OfferDraft();
}
