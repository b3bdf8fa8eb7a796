#include "capture/frmCapture.h"

#include "capture/device_link.h"
#include "capture/FilingNotices.h"
#include "capture/LiveMark.h"
#include "capture/MeantPictures.h"
#include "capture/PressAnswer.h"
#include "cdexport/frmCapCDWrite.h"
#include "contracts/desktop.h"
#include "contracts/fpSpread.h"
#include "contracts/PlatformError.h"
#include "contracts/RoomAwake.h"
#include "contracts/setup_components.h"
#include "contracts/StatusPanels.h"
#include "contracts/VideoCap.h"
#include "filing/capture_folders.h"
#include "filing/capture_root.h"
#include "filing/capture_wastebasket.h"
#include "filing/MovieFiling.h"
#include "filing/StationLease.h"
#include "filing/StillFiling.h"
#include "frame/components.h"
#include "frame/file_calls.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "pacs/PacsHandover.h"
#include "records/acts.h"
#include "records/patient_lookup.h"
#include "records/Statement.h"
#include "records/tables.h"
#include "screenparts/fill_routines.h"
#include "screenparts/NoteBox.h"
#include "screenparts/NoticeStrip.h"
#include "screenparts/VisitPictures.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"
#include "viewing/pacs_notice.h"
#include "visit/device_settings.h"
#include "visit/Visit.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>

using namespace Qt::StringLiterals;

namespace {
/// No question of the sweep may hold up the closing for longer.
constexpr int SweepPatienceMs = 2000;
/// What the closing waits for the last file of a movie that goes to the share.
constexpr int MoviePatienceMs = 10'000;
/// The message about what is left closes by itself.
constexpr int ClosingPatienceMs = 10'000;
} // namespace

frmCapture::frmCapture() : StationForm(QString::fromUtf16(FormName))
{
    BuildCommands();
    BuildControls();
    BuildPopupMenu();
    m_dateRefusal = std::make_unique<DateRefusal>(*m_notices);
    // What an earlier run has left goes on its way at once.
    capture_root::Watch(ClientSetup.CaptureRoot);
    m_note = std::make_unique<VisitNote>(*m_txtCapChamgo, [this](bool isThere) { OfferNote(isThere); });
    m_visitPictures = std::make_unique<VisitPictures>(sprCap(1), 1);
    m_historyPictures = std::make_unique<VisitPictures>(sprCap(2), 2);
    m_filing = std::make_unique<StillFiling>([this](const Visit& visit) { return m_note->Typed(visit); });
    // Before the journal lets go of the first picture.
    m_pacs = PacsHandover::ForSetup(ClientSetup, SaupTable, Launched());
    if (m_pacs)
        m_filing->Journal().setOutlet(m_pacs->Outlet());
    if (m_pacs && ClientSetup.Pacs.SendsMovies)
        InstallService<LiveMark>(std::make_unique<LiveMark>());
    m_grid = std::make_unique<VisitGrid>(*m_visitPictures, *m_filing);
    m_stills = std::make_unique<StillCapture>(*m_grid, *m_filing, *m_note);
    m_history = std::make_unique<CaptureHistory>(
        CaptureHistory::Controls{*m_visitPictures, *m_historyPictures, sprCap(3), *m_lblHisYmd, *m_lblHisEtc}, *m_note,
        *m_grid);
    m_history->LayOutGrids();
    m_meant = std::make_unique<MeantPictures>(*m_history);
    m_deletion = std::make_unique<CaptureDeletion>(*m_history, *m_grid, *m_filing, *m_note, *m_meant);
    m_import = std::make_unique<PictureImport>(*m_picture1, *m_stills);
    m_footSwitch = std::make_unique<FootSwitch>(*m_commCapture, [this](const FootSwitch::Filed& filed) {
        if (!IsUnloaded())
            SetCaptureValues(filed, PictureOrigin::Foot);
    });
    m_movies = std::make_unique<MovieFiling>(*m_filing);
    m_filingNotices = std::make_unique<FilingNotices>(*m_notices, *m_filing, *m_movies);
    m_movie = std::make_unique<MovieRecording>(*m_capCapture, *m_movies, *m_lblMovie, *m_lblMovieStatus);
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
    m_cmbEtc->clear();
    m_cmbEtc->addItems(SectionsOfClient());
    if (!VisitContext.YmdIsValid)
        return;
    const QStringList folders = CaptureFolders(ClientSetup.CaptureRoot, VisitContext.Ymd, SectionsOfClient());
    // A share that doesn't answer has been told.
    const bool wasHeld = filecalls::AnyHeld();
    try {
        capture_root::Judge(ClientSetup.CaptureRoot);
        if (capture_root::Refusal().isEmpty())
            MakeMissingFolders(folders);
        else
            m_filing->MakeFoldersLater(folders);
    } catch (const FilesAway& error) {
        m_filing->MakeFoldersLater(folders);
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
    // Fewer digits would be laid into the mask as another date.
    m_dtpYmd->setText(Trim(VisitContext.Ymd).size() == 8 ? LayIntoMask(VisitContext.Ymd, u"0000-00-00")
                                                         : VisitContext.Ymd);
    ShowPatientPanels(*m_sbarCap, CurrentVisit());
    ShowUnknownPatient();
    RegisterHistoryGrids(m_historyPictures.get(), &sprCap(3));
    if (VisitContext.YmdIsValid) {
        m_lease = std::make_unique<StationLease>(ClientSetup.CaptureRoot);
        m_movies->RepairIn(MovieFolder(VisitContext.CaptureDir));
    }
    m_stills->SettleLeftovers(VisitContext.YmdIsValid ? SectionsOfClient() << VisitContext.Etc : QStringList());
    if (!markFault.isEmpty() && MarkTableOfSetup() == MarkTable::Endo)
        ShowInformation(u"캡쳐 표시를 할 endo 테이블이 없고 만들지도 못했습니다.!!\r\n%1"_s.arg(markFault));
}

void frmCapture::ShowUnknownPatient()
{
    // The look-up needs an insurance row beside the patient's own.
    const QString& chart = VisitContext.Chart;
    if (PatientRecord.Chart != chart && !HasPatientRow(chart))
        m_notices->setNotice(NoticeStrip::Patient,
                             u"차트번호 %1의 환자 정보가 없습니다.!! 확인하세요."_s.arg(Trim(chart)));
}

void frmCapture::Form_Unload()
{
    m_large->End();
    m_fullPicture->Return();
    StopDevice(*m_capCapture);
    InstallService<LiveMark>(nullptr);
    m_history->EndFills();
    m_note->End();
    m_deletion->End();
    FinishMovies();
    m_stills->Finish();
    m_lease.reset();
    EndPacs(m_pacs.get());
    // A system that ends the program has no time for it, and a database or a share that doesn't answer can't tell; the
    // next closing can.
    if (VisitContext.YmdIsValid && !UseService<Desktop>().EndIsRequested() && !m_filing->IsDatabaseAway() &&
        !m_filing->Stills().IsShareAway() && !filecalls::AnyHeld()) {
        const waiting::Patience patience(SweepPatienceMs);
        Guarded([this] { SweepOrphanPictures(CurrentVisit(), m_filing->Journal()); });
    }
    m_footSwitch->Close();
    m_capCapture->Stop();
    FinishCdWriting(*this);
}

void frmCapture::FinishMovies()
{
    m_movies->Look();
    if (!UseService<Desktop>().EndIsRequested()) {
        const BusyPointer busy;
        waiting::ServeFor(MoviePatienceMs, [this] { return m_movies->IsAtRest() || m_movies->IsAway(); });
    }
    m_movies->End();
    if (!m_movies->IsAtRest() && !UseService<Desktop>().EndIsRequested())
        ShowInformation(u"동영상을 저장 폴더로 옮기지 못했습니다.!!\r\n"
                        "이 컴퓨터에 보관되어 있으며, 다음 실행시 옮깁니다.!!"_s,
                        ClosingPatienceMs);
}

void frmCapture::ConnectControls()
{
    connect(m_deletion.get(), &CaptureDeletion::AreGone, &m_stills->PressMoments(), &Moments::ForgetNumbers);
    m_capCapture->setMomentsBefore(ClientSetup.MomentsBefore);
    connect(m_history.get(), &CaptureHistory::PictureIsReplaced, &m_filing->Marked(), &MarkedPictures::Add);
    connect(m_grid.get(), &VisitGrid::CanBeShown, this, GuardedSlot([this] {
                if (!IsUnloaded())
                    m_history->ShowAgain();
            }));
    connect(m_grid.get(), &VisitGrid::TakenChanged, this, &frmCapture::ShowCount);
    m_fullPicture = std::make_unique<FullPicture>(
        *this, FullPicture::Parts{*m_capCapture, *m_notices, *m_count, [this] {
                                      return QStringList{m_sbarCap->Text(PanelSuname), m_sbarCap->Text(PanelChart),
                                                         m_sbarCap->Text(PanelAge), VisitContext.Etc};
                                  }});
    connect(m_grid.get(), &VisitGrid::StillIsEncoded, m_fullPicture.get(), &FullPicture::ShowStill);
    connect(m_grid.get(), &VisitGrid::StillIsFiled, m_fullPicture.get(), &FullPicture::ShowNumber);
    m_large = std::make_unique<LargeLook>(*this, *m_history, *m_fullPicture, *m_notices, m_stills->PressMoments());
    auto* answer = new PressAnswer(*m_capCapture, *m_count);
    connect(m_stills.get(), &StillCapture::Answered, answer, &PressAnswer::Show);
    ShowCount(0);
    connect(m_notices, &NoticeStrip::Cancelled, this, [] { waiting::Cancel(); });
    connect(m_capCapture, &VideoCap::OnFrame, this, GuardedSlot([this](int frames, int) { m_movie->OnFrame(frames); }));
    connect(m_capCapture, &VideoCap::OnFormatRefused, this,
            GuardedSlot([this](int refused, int kept) { KeepFormat(*m_capCapture, refused, kept); }));
    connect(m_capCapture, &VideoCap::OnMovieFault, this,
            GuardedSlot([this](const QString& reason) { m_movie->OnMovieFault(reason); }));
    if (RoomAwake* room = ServiceSlot<RoomAwake>().get())
        connect(room, &RoomAwake::HasSlept, this, GuardedSlot([this] {
                    if (!IsUnloaded())
                        m_movie->GoOnAfterSleep();
                }));
    connect(m_cmbEtc, &QComboBox::activated, this, GuardedSlot([this](int) { OnSectionChosen(); }));
    sprCap(1).setFileDrop(true);
    connect(&sprCap(1), &fpSpread::FilesDropped, this, GuardedSlot([this](const QStringList& paths) {
        if (!m_dateRefusal->Refuses())
            m_import->ImportFiles(paths);
    }));
    for (const int element : {1, 2}) {
        sprCap(element).setDragFile([this, element](int column, int row) {
            QString path;
            Guarded([&] {
                path = PicturesOf(element).FileAt(column, row);
                if (!path.isEmpty())
                    acts::Record(acts::Kind::DraggedOut, *PicturesOf(element).Shown(),
                                 PicturesOf(element).At(column, row)->number);
            });
            return path;
        });
    }
    for (int element = 1; element <= 3; ++element) {
        connect(&sprCap(element), &fpSpread::DblClick, this,
                GuardedSlot([this, element](int column, int row) { OnGridDblClick(element, column, row); }));
        connect(&sprCap(element), &fpSpread::RightClick, this,
                GuardedSlot([this, element](int, int column, int row, int x, int y) {
                    OnGridRightClick(element, column, row, x, y);
                }));
    }
}

void frmCapture::ConnectPacs()
{
    if (IsUnloaded() || !m_pacs)
        return;
    PacsHandover* pacs = m_pacs.get();
    ShowPacsOn(*m_notices, *pacs);
    connect(m_stills.get(), &StillCapture::VisitIsStored, pacs, &PacsHandover::VisitIsStored);
    connect(m_history.get(), &CaptureHistory::PictureIsMarked, pacs,
            [pacs](const Visit& visit, int number) { pacs->PictureIsMarked(visit, number, visit == CurrentVisit()); });
    if (VisitContext.YmdIsValid)
        pacs->VisitIsShown(CurrentVisit());
}

void frmCapture::OfferNote(bool isThere)
{
    m_notices->setNotice(NoticeStrip::Draft, isThere ? u"저장하지 않은 참고사항이 있습니다."_s : QString(),
                         {u"불러오기"_s, [this] { m_note->TakeUpDraft(); }});
}

void frmCapture::Connect()
{
    m_movie->ForgetCutOff();
    if (StartDevice(*m_capCapture))
        m_footSwitch->OpenFootSwitchPort();
    else
        Unload();
}

void frmCapture::SetCaptureValues(const StillCapture::Filed& filed, PictureOrigin origin)
{
    if (!VisitContext.YmdIsValid)
        Q_EMIT m_stills->Answered(false);
    if (m_dateRefusal->Refuses())
        filed(nullptr);
    else
        m_stills->SetCaptureValues(*m_capCapture, filed, origin);
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
    m_large->LeaveSection();
    acts::Record(acts::Kind::VisitOpened, CurrentVisit(), 0, u"캡쳐화면"_s);
    if (m_pacs && VisitContext.YmdIsValid)
        m_pacs->VisitIsShown(CurrentVisit());
    m_history->ShowSection();
}

void frmCapture::OnGridDblClick(int element, int column, int row)
{
    if (element == 3)
        m_history->ShowHistoryLine(row);
    else if (element == 2 && m_historyPictures->At(column, row) != nullptr && !m_dateRefusal->Refuses())
        m_history->EditHistoryPicture(column, row);
}
