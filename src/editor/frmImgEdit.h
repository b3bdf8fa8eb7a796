#pragma once

#include "contracts/ImagXpress.h"
#include "editor/drawing_tools.h"
#include "editor/SnapshotChain.h"
#include "frame/forms.h"

#include <QLabel>

#include <array>

class fpSpread;
class QToolButton;
class TextEntryBox;
struct Visit;

/// Marks up one stored picture in place. The caller puts the picture's path into `lblFilePath` and shows the form
/// modally; the file is read once it is shown.
class frmImgEdit : public StationForm
{
    Q_OBJECT

public:
    static constexpr char16_t FormName[] = u"frmImgEdit";
    static constexpr int Tools = 6;

    frmImgEdit();

    QLabel& lblFilePath() { return *m_lblFilePath; }
    ImagXpress& imgMain() { return *m_imgMain; }
    /// Holder 1 to 5.
    ImagXpress& imgImage(int holder) { return *m_imgImage[static_cast<size_t>(holder - 1)]; }
    TextEntryBox& txtText() { return *m_txtText; }
    const SnapshotChain& Chain() const { return m_chain; }
    /// 1 to 9; 5 is natural size, the one at which the picture can be marked.
    int ZoomLevel() const { return m_zoomLevel; }

protected:
    void Form_Load() override;
    void showEvent(QShowEvent* event) override;

private:
    void BuildControls();
    void BuildTools(QWidget* strip);
    void ConnectControls();

    void ReadPicture();
    void Undo();
    void Redo();
    void Zoom(int step);
    void Save();
    /// The file isn't what was opened: false when the operator doesn't want his picture in its place.
    bool MayReplaceFile(const QString& path);
    /// What the file holds now, as one more step: undoing it brings back what was there.
    void ShowFile(const QString& path);
    void Exit();
    /// Undo and redo buttons as the chain has them.
    void ShowChain();

    void OnPress(int button, float x, float y);
    void OnMove(float x, float y);
    void OnRelease(int button, float x, float y);
    void FinishStroke();
    void OpenTextBox();
    void OnTextEntered();
    /// A text entry that is open ends without a drawing, as if its press had not been.
    void LeaveTextEntry();
    /// No command runs into a stroke.
    bool BeginCommand();

    void MarkToolButton(int tool);
    void ShowPointer();
    void ChooseColour();
    void ChooseFont();
    void setColour(int colour);

    QLabel* m_lblFilePath = nullptr;
    ImagXpress* m_imgMain = nullptr;
    std::array<ImagXpress*, SnapshotChain::Holders> m_imgImage{};
    TextEntryBox* m_txtText = nullptr;
    std::array<QToolButton*, Tools> m_cmdDMode{};
    QToolButton* m_cmdColor = nullptr;
    QToolButton* m_cmdFont = nullptr;
    QToolButton* m_cmdZoomIn = nullptr;
    QToolButton* m_cmdZoomOut = nullptr;
    QToolButton* m_cmdUnDo = nullptr;
    QToolButton* m_cmdReDo = nullptr;
    QToolButton* m_cmdISave = nullptr;
    QToolButton* m_cmdIExit = nullptr;

    SnapshotChain m_chain;
    DrawingTool m_tool = ToolFree;
    int m_colour = 0; ///< The background of `cmdColor`, as the platform's number.
    int m_zoomLevel = 5;
    bool m_pictureRead = false;
    QByteArray m_openedVersion; ///< Of the file, when it was read or written last.
    bool m_isDrawing = false;
    bool m_isFirstMove = false;
    bool m_textOpen = false;
    QPointF m_start; ///< Picture pixels.
    QPointF m_end;
    QPointF m_textPoint;
};

/// The way in which a picture passes from one image control to another; the target shows it fitted.
void CopyPicture(const ImagXpress& source, ImagXpress& target);

/// Opens the editor on a picture, and returns when it is closed: true when it has written the file, as
/// `VisitContext.ImageSaved` tells as well. Nothing happens without a path.
bool OpenPictureEditor(const QString& path);
