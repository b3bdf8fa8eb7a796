#include "findings/open_findings.h"

#include "contracts/fpSpread.h"
#include "contracts/StatusPanels.h"
#include "findings/findings_record.h"
#include "findings/frmCapSogyon.h"
#include "frame/services.h"
#include "screenparts/fill_routines.h"
#include "screenparts/picture_grid.h"
#include "text/text_routines.h"
#include "visit/VisitContext.h"

using namespace Qt::StringLiterals;

namespace {

void FillSlots(const QStringList& numbers)
{
    const Visit visit = VisitOfFindings();
    size_t slot = 0;
    for (const QString& text : numbers) {
        const int number = WholeNumber(text);
        if (number <= 0 || slot == FindingsRecord.PicNo.size())
            continue;
        const QString path = visit.PicturePath(number);
        if (!PictureExists(path))
            continue;
        FindingsRecord.PicPath[slot] = path;
        FindingsRecord.PicNo[slot] = number;
        ++slot;
    }
}

void PrepareRecord(int gridNumber, const FindingsOrigin& origin)
{
    ClearFindingsRecord();
    FindingsRecord.Chart = origin.visit.chart;
    FindingsRecord.Yuhyung = origin.visit.yuhyung;
    FindingsRecord.Jinchal = VisitContext.Jinchal;
    FindingsRecord.Suname = origin.panels.Text(PanelSuname);
    FindingsRecord.Sex = origin.panels.Text(PanelSex);
    FindingsRecord.Nai = origin.panels.Text(PanelAge);
    FindingsRecord.Phone = origin.panels.Text(PanelTel);
    FindingsRecord.Jumin = origin.panels.Text(PanelJumin);
    FindingsRecord.Address = origin.panels.Text(PanelAddress);
    FindingsRecord.Ymd = origin.visit.ymd;
    FindingsRecord.Etc = origin.visit.etc;
    FillSlots(ChosenNumbers(origin.pictures, gridNumber));
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

void OpenFindings(int gridNumber, const FindingsOrigin& origin)
{
    if (origin.pictures.DataRowCnt() == 0)
        return;
    auto* open = static_cast<frmCapSogyon*>(FindForm(QString::fromUtf16(frmCapSogyon::FormName)));
    if (open != nullptr && (open->HasUnsavedText() || open->IsBusy())) {
        open->BringUp();
        if (open->IsBusy() || IsOfVisit(origin.visit) || !IsUnsavedTextSettled(*open))
            return;
    }
    FindingsRecordRollback rollback;
    PrepareRecord(gridNumber, origin);
    if (open != nullptr)
        open->OpenRecord();
    frmCapSogyon& screen = Form<frmCapSogyon>();
    rollback.Keep();
    screen.BringUp();
    screen.OfferDraft();
}
