#include "editor/frmImgEdit.h"

#include "contracts/files.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "editor/edit_settings.h"
#include "editor/TextEntryBox.h"
#include "frame/colours.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "screenparts/picture_grid.h"
#include "text/text_routines.h"

#include <QColorDialog>
#include <QFontDialog>
#include <QFontInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QShortcut>
#include <QStyle>
#include <QToolButton>

#include <exception>
#include <utility>

using namespace Qt::StringLiterals;

namespace {
/// Type code of the files that are written.
constexpr int JpegFile = 8;
/// Backgrounds of the strip's buttons.
constexpr int ChosenTool = 10081927;
constexpr int OtherTool = 14155241;

constexpr char ChosenProperty[] = "isChosen";

QString NameOf(int colour)
{
    return QColor(ColourOf(colour)).name();
}

/// Dark letters, as the pictures on the buttons are. One sheet for the whole strip: each has to be read and matched.
QString StripSheet()
{
    return u"QToolButton { background: %1; color: #17313A; } QToolButton[%2=\"true\"] { background: %3; }"_s.arg(
        NameOf(OtherTool), QString::fromLatin1(ChosenProperty), NameOf(ChosenTool));
}

void MarkChosen(QToolButton& button, bool isChosen)
{
    if (button.property(ChosenProperty).toBool() == isChosen)
        return;
    button.setProperty(ChosenProperty, isChosen);
    button.style()->unpolish(&button);
    button.style()->polish(&button);
    button.update();
}
} // namespace

frmImgEdit::frmImgEdit() : StationForm(QString::fromUtf16(FormName))
{
    BuildControls();
    m_cmdDMode.front()->parentWidget()->setStyleSheet(StripSheet());
    ConnectControls();
}

void frmImgEdit::Form_Load()
{
    ShowChain();
    MarkToolButton(ToolFree);
    const EditSettings settings = LoadEditSettings();
    m_canvas.txtText().setTextFont(settings.font);
    setColour(settings.colour);
}

frmImgEdit& frmImgEdit::Open(const QString& path)
{
    auto file = std::make_unique<filecalls::BegunAsk<OpenedFile>>([path] {
        // Asked first: a file that changes while it is read has changed since.
        QByteArray version = Files().VersionOf(path);
        return OpenedFile{std::move(version), Pictures().LoadToEdit(path)};
    });
    frmImgEdit& editor = Form<frmImgEdit>();
    editor.m_path = path;
    editor.m_lblFilePath->setText(path);
    editor.m_file = std::move(file);
    return editor;
}

void frmImgEdit::ConnectControls()
{
    for (int tool = 0; tool < Tools; ++tool) {
        connect(m_cmdDMode[static_cast<size_t>(tool)], &QToolButton::clicked, this, GuardedSlot([this, tool](bool) {
                    m_canvas.LeaveTextEntry();
                    MarkToolButton(tool);
                }));
    }
    const auto onClick = [this](QToolButton* button, void (frmImgEdit::*command)()) {
        connect(button, &QToolButton::clicked, this, GuardedSlot([this, command](bool) {
                    if (BeginCommand())
                        (this->*command)();
                }));
    };
    onClick(m_cmdColor, &frmImgEdit::ChooseColour);
    onClick(m_cmdFont, &frmImgEdit::ChooseFont);
    onClick(m_cmdFit, &frmImgEdit::Fit);
    onClick(m_cmdUnDo, &frmImgEdit::Undo);
    onClick(m_cmdReDo, &frmImgEdit::Redo);
    onClick(m_cmdISave, &frmImgEdit::Save);
    onClick(m_cmdIExit, &frmImgEdit::Exit);
    for (const auto& [button, step] : {std::pair(m_cmdZoomIn, -1), std::pair(m_cmdZoomOut, 1)}) {
        connect(button, &QToolButton::clicked, this, GuardedSlot([this, by = step](bool) {
                    if (BeginCommand())
                        Zoom(by);
                }));
    }
    const auto onKey = [this](auto key, QToolButton* button) {
        auto* shortcut = new QShortcut(key, this);
        connect(shortcut, &QShortcut::activated, this, GuardedSlot([this, button] {
                    if (!m_canvas.IsTyping() && !m_canvas.IsDrawing())
                        button->click();
                }));
    };
    onKey(QKeySequence::Undo, m_cmdUnDo);
    onKey(QKeySequence::Save, m_cmdISave);
    // Named by its keys: the desktops disagree about the standard one.
    onKey(Qt::CTRL | Qt::Key_Y, m_cmdReDo);
    connect(&m_canvas, &EditCanvas::ChainChanged, this, &frmImgEdit::ShowChain);
    connect(&m_canvas, &EditCanvas::ViewChanged, this, &frmImgEdit::ShowView);
}

void frmImgEdit::paintEvent(QPaintEvent* event)
{
    StationForm::paintEvent(event);
    // Behind the form's first painting, for which the reading leaves the time.
    if (!std::exchange(m_pictureRead, true))
        QMetaObject::invokeMethod(this, GuardedSlot([this] { ReadPicture(); }), Qt::QueuedConnection);
}

void frmImgEdit::ReadPicture()
{
    if (IsUnloaded())
        return;
    QImage picture;
    try {
        OpenedFile file = std::exchange(m_file, nullptr)->Take();
        m_openedVersion = file.version;
        picture = std::move(file.picture);
    } catch (const PlatformError& error) {
        ShowInformation(error.Text());
        Unload();
        return;
    }
    m_canvas.Show(picture);
    if (!CutFileName(picture).isEmpty())
        ShowInformation(u"잘린 그림파일입니다.!! 남아 있는 부분만 보입니다.!!"_s);
}

bool frmImgEdit::BeginCommand()
{
    if (m_canvas.IsDrawing())
        return false;
    m_canvas.LeaveTextEntry();
    return true;
}

void frmImgEdit::ShowChain()
{
    m_cmdUnDo->setEnabled(m_canvas.Chain().UndoEnabled());
    m_cmdReDo->setEnabled(m_canvas.Chain().RedoEnabled());
}

void frmImgEdit::Zoom(int step)
{
    m_canvas.Zoom(step);
}

void frmImgEdit::ShowView()
{
    m_cmdZoomIn->setEnabled(m_canvas.CanZoom(-1));
    m_cmdZoomOut->setEnabled(m_canvas.CanZoom(1));
    setWindowTitle(u"%1 (%2%)"_s.arg(QString::fromUtf16(Caption)).arg(m_canvas.Percent()));
}

void frmImgEdit::MarkToolButton(int tool)
{
    if (!m_canvas.setTool(static_cast<DrawingTool>(tool)))
        return;
    for (int at = 0; at < Tools; ++at)
        MarkChosen(*m_cmdDMode[static_cast<size_t>(at)], at == tool);
}

bool frmImgEdit::MayReplaceFile()
{
    if (Files().VersionOf(m_path) == m_openedVersion)
        return true;
    const Answer answer = AskYesNoCancel(u"다른 곳에서 이 그림을 고쳤습니다. 내 것으로 저장하시겠습니까?"_s);
    if (answer == Answer::No)
        ShowFile();
    return answer == Answer::Yes;
}

void frmImgEdit::ShowFile()
{
    const QByteArray version = Files().VersionOf(m_path);
    m_canvas.ShowInstead(Pictures().LoadToEdit(m_path));
    m_openedVersion = version;
}

void frmImgEdit::Save()
{
    if (m_path.isEmpty() || !PictureExists(m_path))
        return;
    if (m_keepOriginal) {
        m_keepOriginal();
        m_keepOriginal = {};
    }
    // That may have taken its time.
    if (IsUnloaded() || !PictureExists(m_path) || !MayReplaceFile())
        return;
    m_canvas.ShowLastStep();
    ImagXpress& picture = m_canvas.imgMain();
    picture.setTargetFileType(JpegFile);
    const QByteArray content = picture.TargetContent();
    std::exception_ptr fault;
    try {
        WriteWholeFile(m_path, content);
    } catch (const StoredWithFault&) {
        fault = std::current_exception();
    }
    m_openedVersion = Files().VersionOf(m_path);
    Q_EMIT Saved(SumOf(content), m_openedVersion);
    guard::Rethrow(fault);
}

void frmImgEdit::Exit()
{
    SaveFontSettings(m_canvas.txtText().TextFont());
    SaveColorSetting(m_canvas.Colour());
    Unload();
}

void frmImgEdit::setColour(int colour)
{
    m_canvas.setColour(colour);
    m_cmdColor->setStyleSheet(u"QToolButton { background: %1; }"_s.arg(NameOf(colour)));
}

void frmImgEdit::ChooseColour()
{
    QColorDialog dialog(QColor(ColourOf(m_canvas.Colour())), this);
    dialog.setObjectName(u"cdlgCap"_s);
    dialog.setWindowTitle(u"글자색 지정..."_s);
    dialog.setOption(QColorDialog::DontUseNativeDialog);
    if (dialog.exec() != QDialog::Accepted)
        return;
    setColour(NumberOf((dialog.currentColor()).rgb()));
    SaveColorSetting(m_canvas.Colour());
}

void frmImgEdit::ChooseFont()
{
    // The dialog lists what is installed, so it starts from the font that stands in for a Windows name.
    QFont present = m_canvas.txtText().TextFont();
    const QString family = present.family();
    const QString standIn = QFontInfo(present).family();
    present.setFamily(standIn);
    QFontDialog dialog(present, this);
    dialog.setObjectName(u"cdlgCap"_s);
    dialog.setWindowTitle(u"글자체 선택..."_s);
    dialog.setOption(QFontDialog::DontUseNativeDialog);
    // The one line of the dialog that stands in a frame of its own.
    for (auto* line : dialog.findChildren<QLineEdit*>()) {
        if (qobject_cast<QGroupBox*>(line->parent()) != nullptr)
            line->setText(u"가나다 AaBb 123"_s);
    }
    if (dialog.exec() != QDialog::Accepted)
        return;
    const QFont chosen = dialog.selectedFont();
    QFont font(chosen.family() == standIn ? family : chosen.family());
    font.setBold(chosen.bold());
    font.setPointSizeF(chosen.pointSizeF());
    font.setItalic(chosen.italic());
    font.setUnderline(chosen.underline());
    font.setStrikeOut(chosen.strikeOut());
    m_canvas.txtText().setTextFont(font);
    SaveFontSettings(font);
}

bool OpenPictureEditor(const QString& path, const std::function<void()>& keepOriginal,
                       const std::function<void(const PictureSum& sum, const QByteArray& version)>& saved)
{
    if (path.isEmpty())
        return false;
    bool isSaved = false;
    frmImgEdit& editor = frmImgEdit::Open(path);
    QObject::connect(&editor, &frmImgEdit::Saved, &editor, [&](const PictureSum& sum, const QByteArray& version) {
        isSaved = true;
        saved(sum, version);
    });
    editor.setOriginalKeeper(keepOriginal);
    editor.ShowModal();
    return isSaved;
}
