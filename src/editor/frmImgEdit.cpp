#include "editor/frmImgEdit.h"

#include "contracts/files.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "editor/edit_settings.h"
#include "editor/TextEntryBox.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "screenparts/picture_grid.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <QShortcut>
#include <QToolButton>

#include <exception>

using namespace Qt::StringLiterals;

namespace {
constexpr int NaturalLevel = 5;
/// Factor of each zoom level, from 1 on.
constexpr std::array<float, 9> Factors{0.2F, 0.4F, 0.6F, 0.8F, 1.0F, 1.25F, 1.5F, 1.75F, 2.0F};
constexpr int LastLevel = static_cast<int>(Factors.size());
/// Frame that every zoom step gives the canvas.
constexpr float ZoomFrameWidth = 640;
constexpr float ZoomFrameHeight = 480;
/// Type code of the files that are written.
constexpr int JpegFile = 8;
} // namespace

void CopyPicture(const ImagXpress& source, ImagXpress& target)
{
    target.setPicture(source.Picture());
    target.ZoomToFit(2);
    target.Refresh();
}

frmImgEdit::frmImgEdit() : StationForm(QString::fromUtf16(FormName))
{
    BuildControls();
    ConnectControls();
}

void frmImgEdit::Form_Load()
{
    m_lblFilePath->clear();
    for (ImagXpress* holder : m_imgImage) {
        holder->setPicture(LoadPicture(QString()));
        holder->Refresh();
    }
    m_txtText->hide();
    ShowChain();
    MarkToolButton(ToolFree);
    const EditSettings settings = LoadEditSettings();
    m_txtText->setTextFont(settings.font);
    setColour(settings.colour);
}

void frmImgEdit::ConnectControls()
{
    for (int tool = 0; tool < Tools; ++tool) {
        connect(m_cmdDMode[static_cast<size_t>(tool)], &QToolButton::clicked, this, GuardedSlot([this, tool](bool) {
                    LeaveTextEntry();
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
                    if (!m_textOpen && !m_isDrawing)
                        button->click();
                }));
    };
    onKey(QKeySequence::Undo, m_cmdUnDo);
    onKey(QKeySequence::Save, m_cmdISave);
    // Named by its keys: the desktops disagree about the standard one.
    onKey(Qt::CTRL | Qt::Key_Y, m_cmdReDo);

    connect(m_imgMain, &ImagXpress::MouseDown, this,
            GuardedSlot([this](int button, int, float x, float y) { OnPress(button, x, y); }));
    connect(m_imgMain, &ImagXpress::MouseMove, this, GuardedSlot([this](int, int, float x, float y) { OnMove(x, y); }));
    connect(m_imgMain, &ImagXpress::MouseUp, this,
            GuardedSlot([this](int button, int, float x, float y) { OnRelease(button, x, y); }));
    connect(m_txtText, &TextEntryBox::Entered, this, GuardedSlot([this] { OnTextEntered(); }));
    connect(m_txtText, &TextEntryBox::FocusLost, this, GuardedSlot([this] { LeaveTextEntry(); }));
}

void frmImgEdit::showEvent(QShowEvent* event)
{
    StationForm::showEvent(event);
    // A form becomes active again behind each of its dialogs, but is opened once.
    if (m_pictureRead)
        return;
    m_pictureRead = true;
    QMetaObject::invokeMethod(this, GuardedSlot([this] { ReadPicture(); }), Qt::QueuedConnection);
}

void frmImgEdit::ReadPicture()
{
    if (IsUnloaded())
        return;
    const QString path = Trim(m_lblFilePath->text());
    QImage picture;
    try {
        // Asked first: a file that changes while it is read has changed since.
        m_openedVersion = Files().VersionOf(path);
        picture = Pictures().LoadToEdit(path);
    } catch (const PlatformError& error) {
        ShowInformation(error.Text());
        Unload();
        return;
    }
    m_imgMain->setPicture(picture);
    m_imgMain->Refresh();
    CopyPicture(*m_imgMain, imgImage(m_chain.HolderIndex()));
    if (!CutFileName(picture).isEmpty())
        ShowInformation(u"잘린 그림파일입니다.!! 남아 있는 부분만 보입니다.!!"_s);
}

bool frmImgEdit::BeginCommand()
{
    if (m_isDrawing)
        return false;
    LeaveTextEntry();
    return true;
}

void frmImgEdit::Undo()
{
    if (const auto holder = m_chain.Undo())
        CopyPicture(imgImage(*holder), *m_imgMain);
    ShowChain();
}

void frmImgEdit::Redo()
{
    if (const auto holder = m_chain.Redo())
        CopyPicture(imgImage(*holder), *m_imgMain);
    ShowChain();
}

void frmImgEdit::ShowChain()
{
    m_cmdUnDo->setEnabled(m_chain.UndoEnabled());
    m_cmdReDo->setEnabled(m_chain.RedoEnabled());
}

void frmImgEdit::Zoom(int step)
{
    const int level = m_zoomLevel + step;
    if (level < 1 || level > LastLevel)
        return;
    m_zoomLevel = level;
    m_cmdZoomIn->setEnabled(level > 1);
    m_cmdZoomOut->setEnabled(level < LastLevel);
    m_imgMain->setFrameWidth(ZoomFrameWidth);
    m_imgMain->setFrameHeight(ZoomFrameHeight);
    m_imgMain->ScaleBy(Factors[static_cast<size_t>(level - 1)]);
    m_imgMain->Refresh();
    ShowPointer();
}

void frmImgEdit::ShowPointer()
{
    if (m_zoomLevel != NaturalLevel)
        m_imgMain->setPointerStyle(PointerHand);
    else
        m_imgMain->setPointerStyle(m_tool == ToolText ? PointerText : PointerCross);
}

bool frmImgEdit::MayReplaceFile(const QString& path)
{
    if (Files().VersionOf(path) == m_openedVersion)
        return true;
    const Answer answer = AskYesNoCancel(u"다른 곳에서 이 그림을 고쳤습니다. 내 것으로 저장하시겠습니까?"_s);
    if (answer == Answer::No)
        ShowFile(path);
    return answer == Answer::Yes;
}

void frmImgEdit::ShowFile(const QString& path)
{
    const QByteArray version = Files().VersionOf(path);
    const QImage picture = Pictures().LoadToEdit(path);
    CopyPicture(*m_imgMain, imgImage(m_chain.Press()));
    m_imgMain->setPicture(picture);
    m_imgMain->Refresh();
    CopyPicture(*m_imgMain, imgImage(m_chain.HolderIndex()));
    m_openedVersion = version;
    ShowChain();
}

void frmImgEdit::Save()
{
    const QString path = Trim(m_lblFilePath->text());
    if (path.isEmpty() || !PictureExists(path) || !MayReplaceFile(path))
        return;
    CopyPicture(imgImage(m_chain.HolderIndex()), *m_imgMain);
    m_imgMain->setTargetFileType(JpegFile);
    m_imgMain->setTargetFile(path);
    std::exception_ptr fault;
    try {
        m_imgMain->WriteTargetFile();
    } catch (const StoredWithFault&) {
        fault = std::current_exception();
    }
    m_openedVersion = Files().VersionOf(path);
    VisitContext.ImageSaved = true;
    if (fault != nullptr)
        std::rethrow_exception(fault);
}

void frmImgEdit::Exit()
{
    SaveFontSettings(m_txtText->TextFont());
    SaveColorSetting(m_colour);
    Unload();
}

bool OpenPictureEditor(const QString& path)
{
    VisitContext.ImageSaved = false;
    if (path.isEmpty())
        return false;
    frmImgEdit& editor = Form<frmImgEdit>();
    editor.lblFilePath().setText(path);
    editor.ShowModal();
    return VisitContext.ImageSaved;
}
