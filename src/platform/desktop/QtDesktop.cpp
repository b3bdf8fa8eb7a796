#include "platform/desktop/QtDesktop.h"

#include "contracts/files.h"
#include "contracts/OpenFilesDialog.h"
#include "contracts/printing.h"
#include "frame/components.h"
#include "frame/event_loop.h"
#include "frame/forms.h"
#include "frame/plain_text.h"
#include "platform/desktop/BusRoomAwake.h"
#include "platform/desktop/EndSignals.h"
#include "platform/desktop/HeldInput.h"
#include "platform/desktop/IconList.h"
#include "platform/desktop/InstanceLock.h"
#include "platform/desktop/PanelBar.h"
#include "platform/desktop/register_desktop.h"
#include "platform/files/program_folder.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QScopeGuard>
#include <QThread>
#include <QTimer>
#include <QTreeView>

using namespace Qt::StringLiterals;

namespace {
/// Room for a long name beside the size, kind and date of a file.
constexpr QSize OpenDialogPixels{800, 480};
/// Without a display: what other threads are left to end in.
constexpr int LastPatienceMs = 3000;

bool SleepUntil(const std::function<bool()>& done, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (!done() && !deadline.hasExpired())
        QThread::msleep(5);
    return done();
}

QPushButton* AddButton(QMessageBox& box, const QString& text, QMessageBox::ButtonRole role, const QString& name)
{
    QPushButton* button = box.addButton(text, role);
    button->setObjectName(name);
    button->setAccessibleName(text);
    return button;
}

/// Qt's form of a filter: the patterns in the last brackets, which the dialog doesn't show.
QStringList NameFilters(const QString& filter)
{
    QStringList filters;
    const QStringList parts = filter.split(QChar(u'\0'));
    for (qsizetype pair = 0; pair + 1 < parts.size() && !parts[pair].isEmpty(); pair += 2) {
        QString patterns = parts[pair + 1];
        // Names without a point count as well.
        patterns.replace(u"*.*"_s, u"*"_s).replace(u';', u' ');
        filters << u"%1 (%2)"_s.arg(parts[pair], patterns);
    }
    return filters;
}

void Fill(QMessageBox& box, const QString& text, const QString& title)
{
    box.setObjectName(u"messageBox"_s);
    box.setWindowTitle(title);
    box.setTextFormat(Qt::PlainText);
    box.setText(ComposedText(text));
    box.setAccessibleName(title);
    box.setAccessibleDescription(text);
}

class QtOpenFilesDialog final : public OpenFilesDialog
{
public:
    explicit QtOpenFilesDialog(QtDesktop& desktop) : m_desktop(desktop) {}

    std::optional<QStringList> Show(const QString& filter) override { return m_desktop.ShowOpenFilesDialog(filter); }

private:
    QtDesktop& m_desktop;
};

/// While one lives, what the operator does with mouse, keyboard and wheel goes nowhere.
class InputDiscarder final : public QObject
{
public:
    InputDiscarder() { qApp->installEventFilter(this); }

    bool eventFilter(QObject*, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
        case QEvent::Wheel:
        case QEvent::ContextMenu:
        case QEvent::Close:
            return true;
        default:
            return false;
        }
    }
};
} // namespace

/// While a box is open it wants an answer, so the pointer isn't busy.
class QtDesktop::OpenBox
{
public:
    explicit OpenBox(QtDesktop& desktop) : m_desktop(desktop)
    {
        ++m_desktop.m_openBoxes;
        m_desktop.ShowPointer();
    }
    ~OpenBox()
    {
        --m_desktop.m_openBoxes;
        m_desktop.ShowPointer();
    }
    OpenBox(const OpenBox&) = delete;
    OpenBox& operator=(const OpenBox&) = delete;

private:
    QtDesktop& m_desktop;
};

QtDesktop::QtDesktop(CommandString command) : m_command(std::move(command)), m_programFolder(ProgramFolderHere()) {}

const StatePlace& QtDesktop::State() const
{
    if (!m_state)
        m_state = StateFolderHere(m_programFolder);
    return *m_state;
}

QtDesktop::~QtDesktop() = default;

/// False when the box wasn't shown.
bool QtDesktop::Run(QMessageBox& box)
{
    const QString text = box.text();
    if (m_endIsRequested)
        return false;
    // The same message above itself tells nothing new.
    if (m_openTexts.contains(text))
        return false;
    m_openTexts.append(text);
    const auto closed = qScopeGuard([this] { m_openTexts.removeLast(); });
    const OpenBox open(*this);
    box.exec();
    return true;
}

void QtDesktop::ShowInformation(const QString& text, int patienceMs)
{
    QMessageBox box(OwnerWindow());
    Fill(box, text, QString::fromUtf16(StationTitle));
    box.setIcon(QMessageBox::Information);
    AddButton(box, u"확인"_s, QMessageBox::AcceptRole, u"cmdOk"_s);
    if (patienceMs > 0)
        QTimer::singleShot(patienceMs, &box, &QMessageBox::accept);
    Run(box);
}

void QtDesktop::ShowPlain(const QString& text)
{
    QMessageBox box(OwnerWindow());
    Fill(box, text, QGuiApplication::applicationDisplayName());
    AddButton(box, u"확인"_s, QMessageBox::AcceptRole, u"cmdOk"_s);
    Run(box);
}

bool QtDesktop::AskYesNo(const QString& question)
{
    QMessageBox box(OwnerWindow());
    Fill(box, question, QString::fromUtf16(StationTitle));
    const QPushButton* yes = AddButton(box, u"예"_s, QMessageBox::YesRole, u"cmdYes"_s);
    QPushButton* no = AddButton(box, u"아니오"_s, QMessageBox::NoRole, u"cmdNo"_s);
    box.setDefaultButton(no);
    box.setEscapeButton(no);
    return Run(box) && box.clickedButton() == yes;
}

Answer QtDesktop::AskYesNoCancel(const QString& question)
{
    QMessageBox box(OwnerWindow());
    Fill(box, question, QString::fromUtf16(StationTitle));
    const QPushButton* yes = AddButton(box, u"예"_s, QMessageBox::YesRole, u"cmdYes"_s);
    const QPushButton* no = AddButton(box, u"아니오"_s, QMessageBox::NoRole, u"cmdNo"_s);
    QPushButton* cancel = AddButton(box, u"취소"_s, QMessageBox::RejectRole, u"cmdCancel"_s);
    box.setDefaultButton(cancel);
    box.setEscapeButton(cancel);
    if (!Run(box) || box.clickedButton() == cancel)
        return Answer::Cancel;
    return box.clickedButton() == yes ? Answer::Yes : box.clickedButton() == no ? Answer::No : Answer::Cancel;
}

void QtDesktop::SetMousePointer(MousePointer pointer)
{
    m_busy = pointer == PointerBusy;
    ShowPointer();
}

void QtDesktop::ShowPointer()
{
    const bool show = m_busy && m_openBoxes == 0;
    if (show == m_busyShown)
        return;
    m_busyShown = show;
    if (show)
        QApplication::setOverrideCursor(Qt::WaitCursor);
    else
        QApplication::restoreOverrideCursor();
}

void QtDesktop::PumpEvents()
{
    if (!m_displayIsGone)
        QCoreApplication::processEvents();
}

bool QtDesktop::ServeUntil(const DesktopWait& wait)
{
    if (m_displayIsGone)
        return SleepUntil(wait.done, wait.patienceMs > 0 ? wait.patienceMs : LastPatienceMs);
    std::unique_ptr<QObject> filter;
    if (wait.input == WaitInput::Held) // A box that opens meanwhile wants an answer.
        filter = std::make_unique<HeldInput>([this, boxes = m_openBoxes] { return m_openBoxes > boxes; }, wait.leave);
    else if (wait.input == WaitInput::Dropped)
        filter = std::make_unique<InputDiscarder>();
    return event_loop::ServeUntil(
        wait.done, [this] { return m_ended; }, wait.patienceMs);
}

void QtDesktop::ShowPrinterDialog()
{
    try {
        const OpenBox open(*this);
        QPrinter printer;
        if (!m_chosenPrinter.isEmpty())
            printer.setPrinterName(m_chosenPrinter);
        if (!m_chosenPrintFile.isEmpty())
            printer.setOutputFileName(m_chosenPrintFile);
        QPrintDialog dialog(&printer, OwnerWindow());
        dialog.setObjectName(u"printerDialog"_s);
        if (dialog.exec() != QDialog::Accepted)
            return;
        const bool toFile = printer.outputFormat() == QPrinter::PdfFormat && !printer.outputFileName().isEmpty();
        m_chosenPrintFile = toFile ? QFileInfo(printer.outputFileName()).absoluteFilePath() : QString();
        m_chosenPrinter = toFile ? QString() : printer.printerName();
        if (ServiceSlot<PrinterOptions>() == nullptr)
            return;
        if (toFile)
            UseService<PrinterOptions>().UseFile(m_chosenPrintFile);
        else
            UseService<PrinterOptions>().UsePrinter(m_chosenPrinter);
    } catch (const std::exception&) {
        // A failing dialog counts as a cancelled one.
    }
}

std::optional<QStringList> QtDesktop::ChooseFiles(const QString& folder, const QString& filter, bool several)
{
    const OpenBox open(*this);
    const QString last = m_openFolder.isEmpty() ? QDir::homePath() : m_openFolder;
    QFileDialog dialog(OwnerWindow(), u"열기"_s, folder.isEmpty() ? last : NativePath(folder));
    dialog.setObjectName(u"openDialog"_s);
    dialog.setFileMode(several ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
    dialog.resize(OpenDialogPixels);
    if (const auto* list = dialog.findChild<QTreeView*>(u"treeView"_s)) {
        list->header()->setStretchLastSection(false);
        list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    }
    if (!filter.isEmpty()) {
        dialog.setOption(QFileDialog::HideNameFilterDetails);
        dialog.setNameFilters(NameFilters(filter));
    }
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    const QStringList chosen = dialog.selectedFiles();
    if (folder.isEmpty())
        m_openFolder = QFileInfo(chosen.value(0)).path();
    return chosen;
}

std::optional<QString> QtDesktop::ShowOpenDialog(const QString& folder, const QString& filter)
{
    const std::optional<QStringList> chosen = ChooseFiles(folder, filter, false);
    return chosen ? std::optional(chosen->value(0)) : std::nullopt;
}

std::optional<QStringList> QtDesktop::ShowOpenFilesDialog(const QString& filter)
{
    return ChooseFiles(QString(), filter, true);
}

bool QtDesktop::PrevInstance()
{
    if (!m_prevInstance) {
        m_instance = std::make_unique<InstanceLock>(qEnvironmentVariable("XDG_RUNTIME_DIR"), m_programFolder);
        m_prevInstance = m_instance->HeldByAnother();
    }
    return *m_prevInstance;
}

void QtDesktop::setEndRequest(std::function<void()> end)
{
    m_end = std::move(end);
    m_signals = std::make_unique<EndSignals>([this] { RequestEnd(); });
    QObject::connect(qApp, &QGuiApplication::commitDataRequest, m_signals.get(), [this] { RequestEnd(); });
}

void QtDesktop::RequestEnd()
{
    if (m_endIsRequested)
        return;
    m_endIsRequested = true;
    m_end();
}

void QtDesktop::LeaveInstance()
{
    m_instance.reset();
}

void QtDesktop::EndProgram()
{
    m_ended = true;
    QCoreApplication::exit(0);
}

QDate QtDesktop::Today() const
{
    return QDate::currentDate();
}

void RegisterRoomAwake()
{
    InstallService<RoomAwake>(std::make_unique<BusRoomAwake>());
}

void RegisterDesktop(const CommandString& command)
{
    auto desktop = std::make_unique<QtDesktop>(command);
    InstallService<OpenFilesDialog>(std::make_unique<QtOpenFilesDialog>(*desktop));
    InstallService<Desktop>(std::move(desktop));
    InstallService<ImageList>(std::make_unique<IconList>());
    RegisterComponent<StatusPanels>(u"MSComctlLib.StatusBar"_s, [] { return std::make_unique<PanelBar>(); });
    RegisterComponent<clsThemeShell>(u"prjThemeShell.clsThemeShell"_s, [] { return std::make_unique<ThemeShell>(); });
}
