#include "capture/CommandBar.h"
#include "capture/device_link.h"
#include "capture/frmCapture.h"
#include "capture/MeantPictures.h"
#include "cdexport/frmCapCDWrite.h"
#include "contracts/desktop.h"
#include "contracts/fpSpread.h"
#include "contracts/VideoCap.h"
#include "findings/open_findings.h"
#include "frame/components.h"
#include "frame/controls.h"
#include "frame/guard.h"
#include "frame/twips.h"
#include "viewing/CaptureSheet.h"

#include <QMenu>

using namespace Qt::StringLiterals;

void frmCapture::BuildCommands()
{
    const auto dated = [this](const std::function<void()>& run) { return OnlyWithDate(run); };
    const CommandBar::Entry endConnection{u"연결끊기"_s, [this] { StopDevice(*m_capCapture); }};
    const QList<CommandBar::Entry> saving{{u"CD저장"_s, [this] { OpenCdWriting(pos()); }},
                                          {u"동영상저장시작"_s, dated([this] { m_movie->Begin(); })},
                                          {u"동영상저장종료"_s, [this] { m_movie->End(); }}};
    const QList<CommandBar::Entry> settings{
        {u"장치설정"_s, [this] { ChooseDevice(*m_capCapture); }},
        {u"기타설정1"_s, [this] { ShowDriverSettings(*m_capCapture, static_cast<int>(winId())); }},
        {u"기타설정2"_s, [this] { m_capCapture->ShowDriverDialog2(static_cast<int>(winId())); }},
        {u"프린터설정"_s, [] { UseService<Desktop>().ShowPrinterDialog(); }}};
    // What is shown stays until the database has answered.
    const auto showAnew = [this] {
        m_history->EndFills();
        ShowStored();
    };
    const QList<CommandBar::Button> commands{
        {u"연결"_s, u"Connect"_s, [this] { Connect(); }, {endConnection}},
        {u"캡쳐"_s, u"Movie"_s, [this] { SetCaptureValues(guard::Rethrow); }, {}},
        {u"저장"_s, u"Save2"_s, dated([this] { m_stills->SaveVisitNote(); }), saving},
        {u"삭제"_s, u"Delete"_s, dated([this] { m_deletion->DeleteCurrentVisit(); }), {}},
        {u"취소"_s, u"Clear"_s, showAnew, {}},
        {u"출력"_s, u"Print"_s, [this] { PrintGridCaptures(1); }, {}},
        {u"설정"_s, u"Tool"_s, {}, settings},
        {u"파일"_s, u"Find"_s, dated([this] { m_import->ImportPictureFile(); }), {}},
        {u"기타"_s, u"Happy"_s, {}, {{u"소견서입력"_s, dated([this] { OpenFindingsScreen(1); })}}},
        {u"종료"_s, u"Exit"_s, [this] { Unload(); }, {}},
    };
    m_tbarCap = Named(new CommandBar(commands, this), u"tbarCap"_s, u"캡쳐 명령"_s, RectFromTwips(0, 0, 15240, 405));
    // Nothing holds up the shutter, and who wants to leave waits for nothing.
    m_tbarCap->findChild<QWidget*>(u"캡쳐"_s)->setProperty(ServedWhileWaiting, true);
    m_tbarCap->findChild<QWidget*>(u"종료"_s)->setProperty(LeavesWait, true);
}

void frmCapture::BuildPopupMenu()
{
    m_popup = new QMenu(this);
    m_popup->setObjectName(u"팝업메뉴"_s);
    const auto add = [this](const QString& caption, const std::function<void()>& run) {
        QAction* action = m_popup->addAction(caption);
        action->setObjectName(caption);
        connect(action, &QAction::triggered, this, GuardedSlot([run](bool) { run(); }));
    };
    add(u"그림지우기"_s, OnlyWithDate([this] { m_deletion->DeleteMeantPicture(); }));
    add(u"전체지우기"_s, OnlyWithDate([this] { m_deletion->DeleteMeantVisit(); }));
    m_popup->addSeparator()->setObjectName(u"mnuSep"_s);
    add(u"소견서입력"_s, OnlyWithDate([this] { OpenFindingsScreen(2); }));
    add(u"출력"_s, [this] { PrintGridCaptures(2); });
    // An entry runs behind this signal, and before what is queued.
    connect(
        m_popup, &QMenu::aboutToHide, this,
        [this] {
            if (!m_popup->isVisible())
                m_meant->MenuIsClosed();
        },
        Qt::QueuedConnection);
}

std::function<void()> frmCapture::OnlyWithDate(const std::function<void()>& command)
{
    return [this, command] {
        if (!m_dateRefusal->Refuses())
            command();
    };
}

void frmCapture::OpenFindingsScreen(int gridNumber)
{
    OpenFindings({PicturesOf(gridNumber), *m_sbarCap});
}

void frmCapture::PrintGridCaptures(int gridNumber)
{
    PrintGridSheet(PicturesOf(gridNumber), *m_sbarCap, *m_picture1);
}

void frmCapture::OnGridRightClick(int element, int column, int row, int x, int y)
{
    if (element == 3 || !m_meant->MeanOne(element, column, row))
        return;
    for (QAction* action : m_popup->actions()) {
        if (action->objectName() == u"소견서입력"_s)
            action->setEnabled(element == 2);
    }
    m_popup->popup(sprCap(element).mapToGlobal(QPoint(PixelsFromTwips(x), PixelsFromTwips(y))));
}
