#include "capture/frmCapture.h"

#include "capture/CommandBar.h"
#include "capture/device_link.h"
#include "cdexport/frmCapCDWrite.h"
#include "contracts/desktop.h"
#include "contracts/fpSpread.h"
#include "contracts/PlatformError.h"
#include "contracts/setup_components.h"
#include "contracts/StatusPanels.h"
#include "contracts/VideoCap.h"
#include "filing/capture_folders.h"
#include "filing/capture_wastebasket.h"
#include "findings/open_findings.h"
#include "frame/components.h"
#include "frame/controls.h"
#include "frame/file_calls.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "frame/twips.h"
#include "frame/waiting.h"
#include "pacs/PacsSending.h"
#include "records/capture_index.h"
#include "records/tables.h"
#include "screenparts/fill_routines.h"
#include "screenparts/NoteBox.h"
#include "screenparts/NoticeStrip.h"
#include "text/text_routines.h"
#include "viewing/CaptureSheet.h"
#include "visit/device_settings.h"
#include "visit/Visit.h"
#include "visit/VisitContext.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>

using namespace Qt::StringLiterals;

namespace {
/// No question of the sweep may hold up the closing for longer.
constexpr int SweepPatienceMs = 2000;
} // namespace

frmCapture::frmCapture() : StationForm(QString::fromUtf16(FormName))
{
    BuildCommands();
    BuildControls();
    BuildPopupMenu();
    m_note = std::make_unique<VisitNote>(*m_txtCapChamgo, [this](bool isThere) { OfferNote(isThere); });
    m_stills = std::make_unique<StillCapture>(sprCap(1), *m_note);
    m_history = std::make_unique<CaptureHistory>(
        CaptureHistory::Controls{sprCap(1), sprCap(2), sprCap(3), *m_lblHisYmd, *m_lblHisEtc}, *m_note, *m_stills);
    m_history->LayOutGrids();
    m_deletion = std::make_unique<CaptureDeletion>(*m_history, *m_stills, *m_note,
                                                   [this](const Visit& visit, std::optional<int> number) {
                                                       if (m_pacs)
                                                           m_pacs->IsDeleted(visit, number);
                                                   });
    m_import = std::make_unique<PictureImport>(*m_picture1, *m_stills);
    m_footSwitch = std::make_unique<FootSwitch>(*m_commCapture, [this](const FootSwitch::Filed& filed) {
        if (!IsUnloaded())
            SetCaptureValues(filed);
    });
    m_movie = std::make_unique<MovieRecording>(*m_capCapture, *m_lblMovie, *m_lblMovieStatus);
    ConnectControls();
}

frmCapture::~frmCapture() = default;

void frmCapture::Form_Load()
{
    try {
        LoadSteps();
        ConnectPacs();
    } catch (const PlatformError& error) {
        UseService<Desktop>().ShowPlain(error.Text());
        Unload();
    }
}

void frmCapture::PrepareFolders()
{
    // A share that doesn't answer has been told.
    const bool wasHeld = filecalls::AnyHeld();
    try {
        m_cmbEtc->clear();
        m_cmbEtc->addItems(SectionsOfClient());
        MakeMissingFolders(CaptureFolders(VisitContext.Ymd));
    } catch (const FilesAway& error) {
        m_stills->MakeFoldersLater(CaptureFolders(VisitContext.Ymd));
        if (!wasHeld)
            ShowInformation(error.Text());
    }
}

void frmCapture::LoadSteps()
{
    PrepareFolders();
    if (m_cmbEtc->count() == 0) {
        ShowInformation(u"환경설정(클라이언트)의 캡쳐디렉토리를 설정해주세요.!!"_s);
        Unload();
        return;
    }
    CreateObject<clsThemeShell>(u"prjThemeShell.clsThemeShell"_s)
        ->skinchang(*this, static_cast<int>(winId()), Connection);
    MoveTo({0, 0});
    m_cmbEtc->setEditText(VisitContext.Etc);
    m_cmbEtc->setVisible(m_cmbEtc->count() > 1);
    LoadDeviceSettings();
    QString markFault;
    EnsureTable(Connection, QString(), u"endo"_s, true, &markFault);
    m_dtpYmd->setText(LayIntoMask(VisitContext.Ymd, u"0000-00-00"));
    ShowPatientPanels(*m_sbarCap);
    RegisterHistoryGrids(&sprCap(2), &sprCap(3));
    UseService<VideoOptions>().RepairMovies(MovieFolder(VisitContext.CaptureDir));
    m_stills->SettleLeftovers();
    if (!markFault.isEmpty() && !MarksInYk())
        ShowInformation(u"캡쳐 표시를 할 endo 테이블이 없고 만들지도 못했습니다.!!\r\n%1"_s.arg(markFault));
}

void frmCapture::Form_Unload()
{
    m_fullPicture->Return();
    StopDevice(*m_capCapture);
    m_history->EndFills();
    m_note->End();
    m_stills->Finish();
    if (m_pacs)
        m_pacs->End();
    // A system that ends the program has no time for it, and a database or a share that doesn't answer can't tell; the
    // next closing can.
    if (!UseService<Desktop>().EndIsRequested() && !m_stills->IsDatabaseAway() && !m_stills->IsShareAway() &&
        !filecalls::AnyHeld()) {
        const waiting::Patience patience(SweepPatienceMs);
        Guarded([this] { SweepOrphanPictures(CurrentVisit(), m_stills->Pending()); });
    }
    m_footSwitch->Close();
    m_capCapture->Stop();
}

void frmCapture::ConnectControls()
{
    connect(m_stills.get(), &StillCapture::OutageChanged, this,
            [this](const QString& text) { m_notices->setNotice(NoticeStrip::Outage, text); });
    connect(m_stills.get(), &StillCapture::ShareOutageChanged, this,
            [this](const QString& text) { m_notices->setNotice(NoticeStrip::Share, text); });
    connect(m_stills.get(), &StillCapture::RoomChanged, this,
            [this](const QString& text) { m_notices->setNotice(NoticeStrip::Room, text); });
    connect(m_stills.get(), &StillCapture::TakenChanged, this, &frmCapture::ShowCount);
    m_fullPicture = std::make_unique<FullPicture>(*this, *m_capCapture, *m_notices, *m_count);
    connect(m_notices, &NoticeStrip::Shown, m_fullPicture.get(), &FullPicture::PlaceOverlays);
    ShowCount(0);
    connect(m_notices, &NoticeStrip::Cancelled, this, [] { waiting::Cancel(); });
    connect(m_capCapture, &VideoCap::OnFrame, this, GuardedSlot([this](int frames, int) { m_movie->OnFrame(frames); }));
    connect(m_capCapture, &VideoCap::OnFormatRefused, this,
            GuardedSlot([this](int refused, int kept) { KeepFormat(*m_capCapture, refused, kept); }));
    connect(m_capCapture, &VideoCap::OnMovieFault, this,
            GuardedSlot([this](const QString& reason) { m_movie->OnMovieFault(reason); }));
    connect(m_cmbEtc, &QComboBox::activated, this, CommandSlot([this](int) { OnSectionChosen(); }));
    sprCap(1).setFileDrop(true);
    connect(&sprCap(1), &fpSpread::FilesDropped, this,
            CommandSlot([this](const QStringList& paths) { m_import->ImportFiles(paths); }));
    for (const int element : {1, 2}) {
        sprCap(element).setDragFile([this, element](int column, int row) {
            QString path;
            Guarded([&] { path = m_history->FileBehind(element, column, row); });
            return path;
        });
    }
    for (int element = 1; element <= 3; ++element) {
        connect(&sprCap(element), &fpSpread::DblClick, this,
                CommandSlot([this, element](int column, int row) { OnGridDblClick(element, column, row); }));
        connect(&sprCap(element), &fpSpread::RightClick, this,
                CommandSlot([this, element](int, int column, int row, int x, int y) {
                    OnGridRightClick(element, column, row, x, y);
                }));
    }
}

void frmCapture::ConnectPacs()
{
    if (IsUnloaded())
        return;
    m_pacs = PacsSending::ForSetup();
    if (!m_pacs)
        return;
    PacsSending* pacs = m_pacs.get();
    connect(pacs, &PacsSending::NoticeChanged, this,
            [this](const QString& text) { m_notices->setNotice(NoticeStrip::Pacs, text); });
    connect(m_stills.get(), &StillCapture::StillIsSafe, pacs, &PacsSending::StillIsSafe);
    connect(m_stills.get(), &StillCapture::VisitIsStored, pacs, GuardedSlot([this, pacs](const Visit& visit) {
                const PendingRows& pending = m_stills->Pending();
                const QList<int> waiting = pending.NumbersOf(visit);
                pacs->VisitIsStored(visit, StoredNumbers(visit, NumberOrder::Ascending) + waiting,
                                    pending.HasAny(visit));
            }));
    connect(m_history.get(), &CaptureHistory::PictureIsMarked, pacs, &PacsSending::PictureIsMarked);
}

void frmCapture::OfferNote(bool isThere)
{
    m_notices->setNotice(NoticeStrip::Draft, isThere ? u"저장하지 않은 참고사항이 있습니다."_s : QString(),
                         {u"불러오기"_s, [this] { m_note->TakeUpDraft(); }});
}

void frmCapture::BuildCommands()
{
    const CommandBar::Entry endConnection{u"연결끊기"_s, [this] { StopDevice(*m_capCapture); }};
    const QList<CommandBar::Entry> saving{{u"CD저장"_s, [this] { OpenCdWriting(pos()); }},
                                          {u"동영상저장시작"_s, [this] { m_movie->Begin(); }},
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
        {u"저장"_s, u"Save2"_s, [this] { m_stills->SaveVisitNote(); }, saving},
        {u"삭제"_s, u"Delete"_s, [this] { m_deletion->DeleteCurrentVisit(); }, {}},
        {u"취소"_s, u"Clear"_s, showAnew, {}},
        {u"출력"_s, u"Print"_s, [this] { PrintGridCaptures(1); }, {}},
        {u"설정"_s, u"Tool"_s, {}, settings},
        {u"파일"_s, u"Find"_s, [this] { m_import->ImportPictureFile(); }, {}},
        {u"기타"_s, u"Happy"_s, {}, {{u"소견서입력"_s, [this] { OpenFindingsScreen(1); }}}},
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
        connect(action, &QAction::triggered, this, CommandSlot([run](bool) { run(); }));
    };
    add(u"그림지우기"_s, [this] { m_deletion->DeletePictureAt(m_popupGrid, m_popupCol, m_popupRow); });
    add(u"전체지우기"_s, [this] { m_deletion->DeleteShownVisit(m_popupGrid); });
    m_popup->addSeparator()->setObjectName(u"mnuSep"_s);
    add(u"소견서입력"_s, [this] { OpenFindingsScreen(2); });
    add(u"출력"_s, [this] { PrintGridCaptures(2); });
}

void frmCapture::OpenFindingsScreen(int gridNumber)
{
    if (const std::optional<Visit> visit = m_history->ShownVisit(gridNumber))
        OpenFindings(gridNumber, {sprCap(gridNumber), *m_sbarCap, *visit});
}

void frmCapture::PrintGridCaptures(int gridNumber)
{
    if (const std::optional<Visit> visit = m_history->ShownVisit(gridNumber))
        PrintGridSheet(sprCap(gridNumber), gridNumber, *visit, *m_sbarCap, *m_picture1);
}

void frmCapture::Connect()
{
    m_movie->ForgetCutOff();
    if (StartDevice(*m_capCapture))
        m_footSwitch->OpenFootSwitchPort();
    else
        Unload();
}

void frmCapture::SetCaptureValues(const StillCapture::Filed& filed)
{
    m_stills->SetCaptureValues(*m_capCapture, filed);
}

void frmCapture::Clear()
{
    m_history->Clear();
}

void frmCapture::ShowStored()
{
    m_history->ShowVisit();
    if (!IsUnloaded())
        m_history->ShowVisits();
}

void frmCapture::OnSectionChosen()
{
    VisitContext.Etc = Trim(m_cmbEtc->currentText());
    m_history->ShowSection();
}

void frmCapture::OnGridDblClick(int element, int column, int row)
{
    if (element == 3)
        m_history->ShowHistoryLine(row);
    else if (element == 2)
        m_history->EditHistoryPicture(column, row);
}

void frmCapture::OnGridRightClick(int element, int column, int row, int x, int y)
{
    if (element == 3 || !m_history->IsFilledPicture(element, column, row))
        return;
    m_popupRow = row;
    m_popupCol = column;
    m_popupGrid = element;
    for (QAction* action : m_popup->actions()) {
        if (action->objectName() == u"소견서입력"_s)
            action->setEnabled(element == 2);
    }
    m_popup->popup(sprCap(element).mapToGlobal(QPoint(PixelsFromTwips(x), PixelsFromTwips(y))));
}
