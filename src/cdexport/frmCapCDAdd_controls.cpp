#include "cdexport/file_rows.h"
#include "cdexport/frmCapCDAdd.h"
#include "contracts/fpSpread.h"
#include "contracts/StatusPanels.h"
#include "frame/components.h"
#include "frame/controls.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "frame/twips.h"

#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>

using namespace Qt::StringLiterals;

namespace {

constexpr int VisitRows = 2000;
constexpr int ImageRows = 20;
constexpr int ImageColumns = 5;
constexpr double ImageHeightPoints = 42;

fpSpread* PlaceGrid(QWidget* parent, const QString& name, const QString& accessibleName, const QRect& place)
{
    return Named(&PlaceControl<fpSpread>(u"FPSpreadADO.fpSpread"_s, parent), name, accessibleName, place);
}

} // namespace

void frmCapCDAdd::BuildControls()
{
    setWindowTitle(u"CD에 파일추가"_s);
    setFixedSize(PixelsFromTwips(11400), PixelsFromTwips(8700));
    m_sbarCap = Named(&PlaceControl<StatusPanels>(u"MSComctlLib.StatusBar"_s, this), u"sbarCap"_s, u"환자 정보"_s,
                      RectFromTwips(0, 0, 11400, 285));
    m_sbarCap->setPanelCount(8);
    m_tabCapCD = Named(new QTabWidget(this), u"tabCapCD"_s, u"CD에 추가할 자료"_s, RectFromTwips(0, 330, 11400, 7560));
    for (const QString& caption : {u"이미지"_s, u"동영상"_s}) {
        auto* panel = new QWidget(m_tabCapCD);
        panel->setObjectName(u"cszCapCD(%1)"_s.arg(m_tabCapCD->count()));
        m_tabCapCD->addTab(panel, CaptionText(caption));
    }
    BuildLists();

    const auto addBar = [this](const QString& name, const QString& accessibleName, int top) {
        auto* bar = Named(new QProgressBar(this), name, accessibleName, RectFromTwips(120, top, 7800, 240));
        bar->setRange(0, 100);
        bar->setValue(0);
        return bar;
    };
    m_barCount = addBar(u"barCount"_s, u"추가한 자료"_s, 8010);
    m_barMoving = addBar(u"barMoving"_s, u"복사"_s, 8310);
    m_barMoving->setTextVisible(false);
    const auto addButton = [this](const QString& name, const QString& caption, int left) {
        auto* button = new QPushButton(caption, this);
        return Named(button, name, caption, RectFromTwips(left, 8070, 1500, 420));
    };
    connect(addButton(u"cmdAddFile"_s, u"추가"_s, 8100), &QPushButton::clicked, this,
            GuardedSlot([this](bool) { StageSelection(); }));
    connect(addButton(u"cmdExit"_s, u"종료"_s, 9720), &QPushButton::clicked, this,
            GuardedSlot([this](bool) { Unload(); }));
    connect(m_tabCapCD, &QTabWidget::currentChanged, this, GuardedSlot([this](int tab) { ShowTab(tab); }));
}

void frmCapCDAdd::BuildLists()
{
    m_sprCapList =
        PlaceGrid(m_tabCapCD->widget(0), u"sprCapList"_s, u"캡쳐한 방문"_s, RectFromTwips(60, 60, 11220, 2400));
    m_sprCapList->setMaxCols(3);
    m_sprCapList->setMaxRows(VisitRows);
    m_sprCapList->setHeadings({u"캡쳐일자"_s, u"캡쳐종류"_s, u"참고사항"_s});
    m_sprCapList->setColWidth(1, 12);
    m_sprCapList->setColWidth(2, 16);
    m_sprCapList->setColWidth(3, 57);

    m_sprImageList =
        PlaceGrid(m_tabCapCD->widget(0), u"sprImageList"_s, u"방문의 그림"_s, RectFromTwips(60, 2520, 11220, 4530));
    m_sprImageList->setHeadingsVisible(false, false);
    m_sprImageList->setDefaultRowHeight(ImageHeightPoints);
    m_sprImageList->setMaxCols(ImageColumns);
    m_sprImageList->setMaxRows(ImageRows);
    for (int column = 1; column <= ImageColumns; ++column)
        m_sprImageList->setColWidth(column, 18.3);
    m_sprImageList->setMultipleSelection(true);

    m_sprMovieList =
        PlaceGrid(m_tabCapCD->widget(1), u"sprMovieList"_s, u"환자의 동영상"_s, RectFromTwips(60, 60, 11220, 6990));
    LayOutFileList(*m_sprMovieList, {u"전체경로"_s});
    m_sprMovieList->setMultipleSelection(true);
    m_sprMovieList->setRowBlocks(true);

    connect(m_sprCapList, &fpSpread::DblClick, this, GuardedSlot([this](int, int row) { ListVisitImages(row); }));
}
