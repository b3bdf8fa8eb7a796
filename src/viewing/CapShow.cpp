#include "viewing/CapShow.h"

#include "contracts/desktop.h"
#include "contracts/fpSpread.h"
#include "contracts/ImagXpress.h"
#include "contracts/pictures.h"
#include "contracts/setup_components.h"
#include "contracts/StatusPanels.h"
#include "editor/frmImgEdit.h"
#include "filing/MarkedPictures.h"
#include "filing/originals.h"
#include "frame/components.h"
#include "frame/controls.h"
#include "frame/ElidedLabel.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "frame/twips.h"
#include "frame/waiting.h"
#include "pacs/PacsHandover.h"
#include "records/acts.h"
#include "records/Statement.h"
#include "screenparts/fill_routines.h"
#include "screenparts/LargePicture.h"
#include "screenparts/NoticeStrip.h"
#include "screenparts/VisitPictures.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"
#include "viewing/CaptureSheet.h"
#include "viewing/pacs_notice.h"

#include <QMenu>

using namespace Qt::StringLiterals;

namespace {
constexpr int NoticeTwips = 390;
} // namespace

CapShow::CapShow() : StationForm(QString::fromUtf16(FormName))
{
    BuildControls();
    BuildNotices();
    LayOutGrid();
    m_pictures = std::make_unique<VisitPictures>(*m_sprCap, 1);
    m_large = new LargePicture(*this, m_sprCap->geometry());
    m_large->AddPictures(*m_pictures, u"이 방문의 그림"_s);
    connect(m_large, &LargePicture::PictureShown, this,
            [](const Visit& visit, int number) { acts::Record(acts::Kind::LookedAt, visit, number, u"크게 보기"_s); });
    connect(m_sprCap, &fpSpread::DblClick, this,
            GuardedSlot([this](int column, int row) { OpenEditorFromCell(column, row); }));
    connect(m_sprCap, &fpSpread::RightClick, this, GuardedSlot([this](int, int, int, int x, int y) {
                m_popup->popup(m_sprCap->mapToGlobal(QPoint(PixelsFromTwips(x), PixelsFromTwips(y))));
            }));
    m_sprCap->setDragFile([this](int column, int row) {
        QString path;
        Guarded([&] {
            path = m_pictures->FileAt(column, row);
            if (!path.isEmpty())
                acts::Record(acts::Kind::DraggedOut, *m_pictures->Shown(), m_pictures->At(column, row)->number);
        });
        return path;
    });
    connect(m_popup, &QMenu::triggered, this, GuardedSlot([this](QAction*) { PrintShownCaptures(); }));
}

CapShow::~CapShow() = default;

void CapShow::BuildControls()
{
    setWindowTitle(u"캡쳐이미지 "_s);
    setFixedSize(PixelsFromTwips(12960), PixelsFromTwips(9750));
    m_sbarCap = Named(&PlaceControl<StatusPanels>(u"MSComctlLib.StatusBar"_s, this), u"sbarCap"_s, u"환자 정보"_s,
                      RectFromTwips(0, 0, 12960, 285));
    m_sbarCap->setPanelCount(8);
    m_lblYmd = Named(new PlainLabel(this), u"lblYmd"_s, u"캡쳐일자"_s, RectFromTwips(120, 300, 1500, 285));
    m_lblEtc = Named(new ElidedLabel(this), u"lblEtc"_s, u"캡쳐종류"_s, RectFromTwips(1680, 300, 6000, 285));
    m_sprCap = Named(&PlaceControl<fpSpread>(u"FPSpreadADO.fpSpread"_s, this), u"sprCap"_s, u"캡쳐그림"_s,
                     RectFromTwips(0, 600, 12960, 9120));
    m_picture1 = &PlaceControl<ImagXpress>(u"IMAGXPR6LibCtl.ImagXpress"_s, this);
    m_picture1->setObjectName(u"Picture1"_s);
    m_picture1->hide();
    m_popup = new QMenu(this);
    m_popup->setObjectName(u"이미지팝업"_s);
    m_popup->addAction(u"출력"_s)->setObjectName(u"출력"_s);
}

void CapShow::BuildNotices()
{
    m_notices =
        Named(new NoticeStrip(this), u"notices"_s, u"알림"_s, RectFromTwips(0, 9750 - NoticeTwips, 12960, NoticeTwips));
    connect(m_notices, &NoticeStrip::Cancelled, this, [] { waiting::Cancel(); });
    // No picture lies under it.
    connect(m_notices, &NoticeStrip::Shown, this, [this](bool shown) {
        const QRect whole = RectFromTwips(0, 600, 12960, 9120);
        m_sprCap->setGeometry(shown ? whole.adjusted(0, 0, 0, m_notices->y() - whole.bottom() - 1) : whole);
        m_large->setRoom(m_sprCap->geometry());
    });
}

void CapShow::LayOutGrid()
{
    constexpr int Columns = 5;
    constexpr int Rows = 50;
    m_sprCap->setHeadingsVisible(false, false);
    m_sprCap->setMaxCols(Columns);
    m_sprCap->setMaxRows(Rows);
    m_sprCap->setDefaultRowHeight(13.3);
    for (int column = 1; column <= Columns; ++column) {
        m_sprCap->setColWidth(column, 21);
        m_sprCap->setStoredCellType(column, 0, CellTypeStaticText);
    }
    for (int row = 1; row <= Rows; row += 2)
        m_sprCap->setRowHeight(row, 86);
}

void CapShow::Form_Load()
{
    CreateObject<clsThemeShell>(u"prjThemeShell.clsThemeShell"_s)
        ->skinchang(*this, static_cast<int>(winId()), Connection);
    MoveTo({0, 0});
    ShowPatientPanels(*m_sbarCap, CurrentVisit());
    m_lblYmd->setText(LayIntoMask(VisitContext.Ymd, u"0000-00-00"));
    m_lblEtc->setText(VisitContext.Etc);
    ConnectPacs();
}

void CapShow::ConnectPacs()
{
    m_pacs = PacsHandover::ForSetup(ClientSetup, SaupTable, Launched());
    if (!m_pacs)
        return;
    ShowPacsOn(*m_notices, *m_pacs);
    if (VisitContext.YmdIsValid)
        m_pacs->VisitIsShown(CurrentVisit());
}

void CapShow::Form_Unload()
{
    m_large->Close();
    m_sprCap->BeginFill();
    m_marked.reset();
    EndPacs(m_pacs.get());
}

void CapShow::OpenEditorFromCell(int column, int row)
{
    const QString path = m_pictures->FileAt(column, row);
    if (path.isEmpty())
        return;
    if (!VisitContext.YmdIsValid) {
        ShowInformation(QString::fromUtf16(InvalidDateText));
        return;
    }
    const Visit visit = *m_pictures->Shown();
    const ShownPicture picture = *m_pictures->At(column, row);
    OriginalKeeper original(visit, picture.number);
    const auto saved = [&](const PictureSum& sum, const QByteArray& version) {
        original.NoteWritten();
        if (!m_marked)
            m_marked = std::make_unique<MarkedPicturesAlone>();
        m_marked->Marked().Add(visit, picture.number, sum, version);
    };
    // Here nobody stores the visit.
    acts::Record(acts::Kind::LookedAt, visit, picture.number);
    const bool isMarked = OpenPictureEditor(
        path, [&original] { original.Keep(); }, saved);
    if (isMarked)
        acts::Record(acts::Kind::MarkedUp, visit, picture.number);
    if (isMarked && m_pacs)
        m_pacs->PictureIsMarked(visit, picture.number, false);
    if (const qsizetype at = m_pictures->Find(picture); at >= 0 && m_pictures->Shown() == visit) {
        const QImage thumbnail = ::Pictures().LoadWithin(path, m_sprCap->CellPixels(column, row));
        m_pictures->Update(at, [&thumbnail](VisitPictures::Picture& shown) { shown.thumbnail = thumbnail; });
    }
}

void CapShow::PrintShownCaptures()
{
    PrintGridSheet(*m_pictures, *m_sbarCap, *m_picture1);
}
