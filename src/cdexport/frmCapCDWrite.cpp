#include "cdexport/frmCapCDWrite.h"

#include "cdexport/disc_index.h"
#include "cdexport/disc_objects.h"
#include "cdexport/file_rows.h"
#include "cdexport/frmCapCDAdd.h"
#include "contracts/cd.h"
#include "contracts/desktop.h"
#include "contracts/fpSpread.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/controls.h"
#include "frame/forms.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "frame/services.h"
#include "frame/twips.h"
#include "frame/waiting.h"
#include "records/acts.h"
#include "records/patient_lookup.h"
#include "screenparts/NoticeStrip.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <QComboBox>
#include <QEvent>
#include <QFileInfo>
#include <QPoint>
#include <QPushButton>
#include <QRegularExpression>
#include <QScopeGuard>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
constexpr int KeyCodeDelete = 46;
constexpr int BurnLookMs = 200;

std::unique_ptr<XPBurn> NewBurner()
{
    return CreateObject<XPBurn>(u"BaydenBurn.XPBurn"_s);
}

/// Whose pictures go to the disc: their names there begin with chart, date and number.
void RecordStaged(const QString& area)
{
    static const QRegularExpression picture(uR"(^(.{8})(\d{8})(\d{3,5})\D)"_s);
    for (const FolderEntry& entry : Files().Entries(area)) {
        const QRegularExpressionMatch match = picture.match(entry.Name);
        if (entry.IsFolder)
            continue;
        acts::Act act{acts::Kind::WrittenToDisc, match.captured(1), match.captured(2), {}, match.captured(3).toInt()};
        act.detail = entry.Name;
        acts::Record(act);
    }
}
} // namespace

frmCapCDWrite::frmCapCDWrite() : StationForm(QString::fromUtf16(FormName))
{
    BuildControls();
}

void frmCapCDWrite::BuildControls()
{
    setWindowTitle(u"CD저장"_s);
    setFixedSize(PixelsFromTwips(9600), PixelsFromTwips(6600));
    const auto addLabel = [this](const QString& name, const QString& text, const QRect& place) {
        return Named(new PlainLabel(text, this), name, text, place);
    };
    QLabel* drive = addLabel(u"lblDrive"_s, u"Dirve :"_s, RectFromTwips(120, 120, 1320, 330));
    m_cmbCDList = Named(new QComboBox(this), u"cmbCDList"_s, u"Dirve :"_s, RectFromTwips(1500, 120, 7980, 330));
    drive->setBuddy(m_cmbCDList);
    addLabel(u"lblStaging"_s, u"Staging Area :"_s, RectFromTwips(120, 510, 1320, 330));
    m_lblStagingArea = addLabel(u"lblStagingArea"_s, QString(), RectFromTwips(1500, 510, 7980, 330));
    m_lblStagingArea->setAccessibleName(u"Staging Area :"_s);

    m_sprCDDrive = Named(&PlaceControl<fpSpread>(u"FPSpreadADO.fpSpread"_s, this), u"sprCDDrive"_s,
                         u"CD에 저장할 파일"_s, RectFromTwips(120, 930, 9360, 4950));
    LayOutFileList(*m_sprCDDrive);
    connect(m_sprCDDrive, &fpSpread::KeyDown, this, GuardedSlot([this](int keyCode, int) {
                if (keyCode == KeyCodeDelete)
                    DeleteStagedFile();
            }));

    connect(AddButton(u"cmdFind"_s, u"파일추가"_s, 120), &QPushButton::clicked, this,
            GuardedSlot([this](bool) { FindFile(); }));
    connect(AddButton(u"cmdAddFile"_s, u"추가"_s, 1650), &QPushButton::clicked, this,
            GuardedSlot([this](bool) { AddFiles(); }));
    connect(AddButton(u"cmdDelFile"_s, u"삭제"_s, 3180), &QPushButton::clicked, this,
            GuardedSlot([this](bool) { DeleteStagedFile(); }));
    m_lblRoom = addLabel(u"lblRoom"_s, QString(), RectFromTwips(4710, 6030, 3240, 420));
    m_lblRoom->setAlignment(Qt::AlignCenter);
    m_cmdStart = AddButton(u"cmdStart"_s, u"Burn..."_s, 8040);
    connect(m_cmdStart, &QPushButton::clicked, this, GuardedSlot([this](bool) { StartBurning(); }));
    connect(m_cmbCDList, &QComboBox::currentIndexChanged, this, GuardedSlot([this](int) { UseChosenDrive(); }));

    // Over the list's end, and not over the buttons.
    auto* notices = Named(new NoticeStrip(this), u"notices"_s, u"알림"_s, RectFromTwips(120, 5490, 9360, 390));
    connect(notices, &NoticeStrip::Cancelled, this, [] { waiting::Cancel(); });
}

QPushButton* frmCapCDWrite::AddButton(const QString& name, const QString& caption, int left)
{
    return Named(new QPushButton(caption, this), name, caption, RectFromTwips(left, 6030, 1440, 420));
}

void frmCapCDWrite::Form_Load()
{
    m_cmbCDList->clear();
    const auto system = CreateObject<FileSystemObject>(u"Scripting.FileSystemObject"_s);
    const QList<DriveEntry> drives = system->Drives();
    for (const DriveEntry& drive : drives) {
        if (drive.DriveType == DriveTypeCd || (ClientSetup.BurnerUsb && drive.DriveType == DriveTypeRemovable))
            m_cmbCDList->addItem(drive.Path);
    }
    if (m_cmbCDList->count() == 0) {
        ShowInformation(u"CD드라이브가 없습니다.!!"_s);
        Unload();
        return;
    }
    m_cmbCDList->setCurrentIndex(0);
    const auto burner = NewBurner();
    burner->ShowOver(*this);
    m_stagingPath = burner->burnArea();
    m_lblStagingArea->setText(m_stagingPath);
    m_lblStagingArea->setToolTip(ToolTipText(m_stagingPath));
    UseChosenDrive();
    ListStagingArea(m_stagingPath);
    if (const QString interrupted = burner->Interrupted(); !interrupted.isEmpty())
        ShowInformation(interrupted);
}

void frmCapCDWrite::UseChosenDrive()
{
    if (!ClientSetup.BurnerUsb || IsUnloaded() || m_stagingPath.isEmpty())
        return;
    NewBurner()->UseDrive(m_cmbCDList->currentText());
    ShowRoom();
}

void frmCapCDWrite::ShowRoom()
{
    const auto burner = NewBurner();
    QString text;
    try {
        const qint64 chosen = burner->Content().bytes;
        const qint64 room = burner->KnownRoom();
        text = u"선택 %1"_s.arg(MegabytesText(chosen));
        if (room >= 0)
            text += u" / 빈 공간 %1"_s.arg(MegabytesText(room));
        if (room >= 0 && chosen > room)
            text += u" 부족"_s;
    } catch (const PlatformError&) {
        // What can't be read can't be counted.
    }
    m_lblRoom->setText(text);
    m_lblRoom->setAccessibleName(text);
}

void frmCapCDWrite::ListStagingArea(const QString& folder)
{
    try {
        ShowEntries(Files().Entries(folder));
    } catch (const PlatformError&) {
        // The list stays as short as what could be read.
    }
}

void frmCapCDWrite::ShowEntries(const QList<FolderEntry>& entries)
{
    m_sprCDDrive->ClearRange(1, 1, m_sprCDDrive->MaxCols(), m_sprCDDrive->MaxRows(), false);
    m_sprCDDrive->setMaxRows(static_cast<int>(entries.size()));
    int row = 0;
    for (const FolderEntry& entry : entries)
        WriteFileRow(*m_sprCDDrive, ++row, entry);
    ShowRoom();
}

void frmCapCDWrite::FollowStagingArea()
{
    QStringList shown;
    for (int row = 1; row <= m_sprCDDrive->DataRowCnt(); ++row)
        shown << m_sprCDDrive->TextAt(1, row);
    try {
        const QList<FolderEntry> entries = Files().Entries(m_stagingPath);
        QStringList there;
        for (const FolderEntry& entry : entries)
            there << entry.Name;
        if (shown != there)
            ShowEntries(entries);
    } catch (const PlatformError&) {
        // A message would activate the screen again when it is closed.
    }
}

bool frmCapCDWrite::event(QEvent* event)
{
    if (event->type() == QEvent::WindowActivate && !IsUnloaded() && !m_stagingPath.isEmpty())
        Guarded([this] { FollowStagingArea(); });
    return StationForm::event(event);
}

void frmCapCDWrite::FindFile()
{
    const std::optional<QString> chosen = UseService<Desktop>().ShowOpenDialog(ClientSetup.CaptureRoot, QString());
    if (!chosen)
        return;
    if (Trim(*chosen).isEmpty() || !FileExists(*chosen)) {
        ShowInformation(u"선택된 파일이 없습니다.!!"_s);
        return;
    }
    if (!IsReady())
        return;
    const auto burner = NewBurner();
    CreateObject<clsDeskKit>(u"prjDeskKit.clsDeskKit"_s)
        ->FileCopyDialog(*chosen, burner->burnArea() + QFileInfo(NativePath(*chosen)).fileName());
    ListStagingArea(m_stagingPath);
}

void frmCapCDWrite::AddFiles()
{
    if (IsFormLoaded(QString::fromUtf16(frmCapCDAdd::FormName)))
        return;
    Form<frmCapCDAdd>().ShowModal();
    ListStagingArea(m_stagingPath);
}

void frmCapCDWrite::DeleteStagedFile()
{
    const int row = m_sprCDDrive->ActiveRow();
    // Blanks at the ends belong to a file's name.
    const QString name = m_sprCDDrive->TextAt(1, row);
    if (Trim(name).isEmpty())
        return;
    const QList<FolderEntry> entries = Files().Entries(m_stagingPath);
    const bool isFolder = std::ranges::any_of(
        entries, [&name](const FolderEntry& entry) { return entry.IsFolder && entry.Name == name; });
    if (isFolder && !AskYesNo(u"폴더와 그 안의 파일을 모두 삭제하시겠습니까?"_s))
        return;
    Files().DeleteEntry(m_stagingPath, name);
    m_sprCDDrive->DeleteRows(row, 1);
    ShowRoom();
    if (ClientSetup.BurnerDicom) {
        disc_objects::RemoveLone(m_stagingPath);
        FollowStagingArea();
    }
}

bool frmCapCDWrite::IsReady()
{
    if (NewBurner()->Equipped()) {
        if (!IsUnloaded())
            ShowRoom();
        return !IsUnloaded();
    }
    ShowInformation(u"CD저장 준비가 되어있지 않습니다.!!"_s);
    return false;
}

bool frmCapCDWrite::AddIndex(XPBurn& burner)
{
    const disc_index::Patient patient{PatientRecord.Chart, PatientRecord.Suname};
    const disc_index::Kind kind{ClientSetup.BurnerIndexNotes, ClientSetup.BurnerDicomPlain, disc_objects::ClinicText()};
    const QString folder = disc_index::Make(m_stagingPath, burner.Content(), patient, kind);
    if (!folder.isEmpty())
        burner.AddFolder(folder);
    return !folder.isEmpty();
}

void frmCapCDWrite::StartBurning()
{
    // A second press during the wait for the drive is answered at once.
    const QVariant before = m_cmdStart->property(ServedWhileWaiting);
    m_cmdStart->setProperty(ServedWhileWaiting, true);
    const auto held = qScopeGuard([this, before] { m_cmdStart->setProperty(ServedWhileWaiting, before); });
    if (!IsReady())
        return;
    const auto burner = NewBurner();
    if (burner->isburning()) {
        ShowInformation(u"CD저장 장치를 사용중입니다.!!"_s);
        return;
    }
    if (m_sprCDDrive->DataRowCnt() == 0) {
        ShowInformation(u"추가된 파일이 없습니다."_s);
        return;
    }
    if (ClientSetup.BurnerDicom) {
        if (const QString problem = disc_objects::WriteDirectory(m_stagingPath); !problem.isEmpty()) {
            ShowInformation(u"DICOM 목록을 만들지 못하여 CD에 쓰지 않았습니다.!!\r\n%1"_s.arg(problem));
            return;
        }
        FollowStagingArea();
    }
    if ((ClientSetup.BurnerIndex || ClientSetup.BurnerDicomPlain) && !AddIndex(*burner))
        return;
    if (IsUnloaded())
        return;
    RecordStaged(m_stagingPath);
    burner->ShowOver(*this);
    burner->Startburn();
    while (burner->isburning() && !UseService<Desktop>().ProgramEnded())
        waiting::ServeFor(
            BurnLookMs, [&burner] { return !burner->isburning(); }, WaitInput::Served);
    if (!IsUnloaded())
        ShowRoom();
}

void FinishCdWriting(QWidget& screen)
{
    const auto burner = NewBurner();
    if (!burner->isburning())
        return;
    if (!UseService<Desktop>().EndIsRequested())
        screen.hide();
    burner->Finish();
}

void OpenCdWriting(const QPoint& place)
{
    const QString name = QString::fromUtf16(frmCapCDWrite::FormName);
    if (IsFormLoaded(name)) {
        FindForm(name)->BringUp();
        return;
    }
    frmCapCDWrite& screen = Form<frmCapCDWrite>();
    screen.move(place);
    screen.Show();
}
