#include "capture/frmCapture.h"

#include "capture/capture_folders.h"
#include "capture/capture_wastebasket.h"
#include "capture/CommandBar.h"
#include "capture/device_link.h"
#include "cdexport/open_cd_writing.h"
#include "contracts/desktop.h"
#include "contracts/fpSpread.h"
#include "contracts/PlatformError.h"
#include "contracts/setup_components.h"
#include "contracts/StatusPanels.h"
#include "contracts/VideoCap.h"
#include "findings/open_findings.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "records/capture_index.h"
#include "records/tables.h"
#include "screenparts/fill_routines.h"
#include "screenparts/NoteBox.h"
#include "text/text_routines.h"
#include "viewing/CaptureSheet.h"
#include "viewing/sheet_pictures.h"
#include "visit/device_settings.h"
#include "visit/Visit.h"
#include "visit/VisitContext.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>

using namespace Qt::StringLiterals;

frmCapture::frmCapture() : StationForm(QString::fromUtf16(FormName))
{
    BuildControls();
    BuildPopupMenu();
    m_note = std::make_unique<VisitNote>(*m_txtCapChamgo);
    m_stills = std::make_unique<StillCapture>(sprCap(1), *m_note);
    m_history = std::make_unique<CaptureHistory>(
        CaptureHistory::Controls{sprCap(1), sprCap(2), sprCap(3), *m_lblHisYmd, *m_lblHisEtc}, *m_note, *m_stills);
    m_history->LayOutGrids();
    m_deletion = std::make_unique<CaptureDeletion>(*m_history, *m_stills, *m_note);
    m_import = std::make_unique<PictureImport>(*m_picture1, *m_stills);
    m_footSwitch = std::make_unique<FootSwitch>(*m_commCapture, [this] {
        if (!IsUnloaded())
            SetCaptureValues();
    });
    m_movie = std::make_unique<MovieRecording>(*m_capCapture, *m_lblMovie, *m_lblMovieStatus);
    ConnectControls();
}

void frmCapture::Form_Load()
{
    try {
        LoadSteps();
    } catch (const PlatformError& error) {
        UseService<Desktop>().ShowPlain(error.Text());
        Unload();
    }
}

void frmCapture::LoadSteps()
{
    PrepareCaptureFolders(VisitContext.Ymd, *m_cmbEtc);
    if (m_cmbEtc->count() == 0) {
        ShowInformation(u"환경설정(클라이언트)의 캡쳐디렉토리를 설정해주세요.!!"_s);
        Unload();
        return;
    }
    CreateObject<clsThemeShell>(u"prjThemeShell.clsThemeShell"_s)
        ->skinchang(*this, static_cast<int>(winId()), Connection);
    move(0, 0);
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
    StopDevice(*m_capCapture);
    m_history->EndFills();
    m_stills->Finish();
    // A system that ends the program has no time for it; the next closing has.
    if (!UseService<Desktop>().EndIsRequested())
        Guarded([this] { SweepOrphanPictures(CurrentVisit(), m_stills->Pending()); });
    m_footSwitch->Close();
    m_capCapture->Stop();
}

void frmCapture::ConnectControls()
{
    connect(m_tbarCap, &CommandBar::ButtonClick, this,
            CommandSlot([this](const QString& caption) { RunButton(caption); }));
    connect(m_tbarCap, &CommandBar::ButtonMenuClick, this,
            CommandSlot([this](const QString& entry) { RunMenuEntry(Trim(entry)); }));
    connect(m_popup, &QMenu::triggered, this,
            CommandSlot([this](const QAction* entry) { RunPopupEntry(entry->objectName()); }));
    connect(m_capCapture, &VideoCap::OnFrame, this, GuardedSlot([this](int frames, int) { m_movie->OnFrame(frames); }));
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

void frmCapture::RunButton(const QString& caption)
{
    if (caption == u"연결"_s)
        Connect();
    else if (caption == u"캡쳐"_s)
        SetCaptureValues();
    else if (caption == u"저장"_s)
        m_stills->SaveVisitNote();
    else if (caption == u"삭제"_s)
        m_deletion->DeleteCurrentVisit();
    else if (caption == u"출력"_s)
        PrintGridCaptures(1);
    else if (caption == u"파일"_s)
        m_import->ImportPictureFile();
    else if (caption == u"취소"_s) {
        Clear();
        ShowStored();
    } else if (caption == u"종료"_s)
        Unload();
}

void frmCapture::RunMenuEntry(const QString& entry)
{
    if (entry == u"연결끊기"_s)
        StopDevice(*m_capCapture);
    else if (entry == u"CD저장"_s)
        OpenCdWriting(pos());
    else if (entry == u"동영상저장시작"_s)
        m_movie->Begin();
    else if (entry == u"동영상저장종료"_s)
        m_movie->End();
    else if (entry == u"장치설정"_s)
        ChooseDevice(*m_capCapture);
    else if (entry == u"기타설정1"_s)
        ShowDriverSettings(*m_capCapture, static_cast<int>(winId()));
    else if (entry == u"기타설정2"_s)
        m_capCapture->ShowDriverDialog2(static_cast<int>(winId()));
    else if (entry == u"프린터설정"_s)
        UseService<Desktop>().ShowPrinterDialog();
    else if (entry == u"소견서입력"_s)
        OpenFindingsScreen(1);
}

void frmCapture::OpenFindingsScreen(int gridNumber)
{
    if (const std::optional<Visit> visit = m_history->ShownVisit(gridNumber))
        OpenFindings(gridNumber, {sprCap(gridNumber), *m_sbarCap, *visit});
}

void frmCapture::RunPopupEntry(const QString& entry)
{
    if (entry == u"그림지우기"_s)
        m_deletion->DeletePictureAt(m_popupGrid, m_popupCol, m_popupRow);
    else if (entry == u"전체지우기"_s)
        m_deletion->DeleteShownVisit(m_popupGrid);
    else if (entry == u"소견서입력"_s)
        OpenFindingsScreen(2);
    else if (entry == u"출력"_s)
        PrintGridCaptures(2);
}

void frmCapture::PrintGridCaptures(int gridNumber)
{
    const std::optional<Visit> visit = m_history->ShownVisit(gridNumber);
    if (!visit)
        return;
    CaptureSheetRecord sheet;
    ClearCaptureSheetRecord(sheet);
    FillCaptureSheetRecord(sheet, *visit, *m_sbarCap);
    sheet.Pictures = SheetPictures(sprCap(gridNumber), gridNumber, *visit);
    if (sheet.Pictures.isEmpty())
        return;
    const BusyPointer busy;
    PrintCaptureSheet(sheet, *m_picture1);
}

void frmCapture::Connect()
{
    if (StartDevice(*m_capCapture))
        m_footSwitch->OpenFootSwitchPort();
    else
        Unload();
}

void frmCapture::SetCaptureValues()
{
    m_stills->SetCaptureValues(*m_capCapture);
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
    m_popup->popup(sprCap(element).mapToGlobal(QPoint(x, y) / 15));
}
