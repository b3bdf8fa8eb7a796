#pragma once

#include "contracts/ImagXpress.h"
#include "editor/drawing_tools.h"
#include "editor/SnapshotChain.h"

#include <QObject>

#include <array>
#include <optional>

class TextEntryBox;

/// The picture of the editor, and the hand that marks it: strokes, texts, the way back and forth, and its size on the
/// screen.
class EditCanvas : public QObject
{
    Q_OBJECT

public:
    /// Builds the controls on the form, which owns them.
    explicit EditCanvas(QWidget& form);

    ImagXpress& imgMain() { return *m_imgMain; }
    /// Holder 1 to 5.
    ImagXpress& imgImage(int holder) { return *m_imgImage[static_cast<size_t>(holder - 1)]; }
    TextEntryBox& txtText() { return *m_txtText; }
    const SnapshotChain& Chain() const { return m_chain; }
    /// 1 to 9; 5 is natural size, the one at which the picture can be marked.
    int ZoomLevel() const { return m_zoomLevel; }
    static constexpr int LastZoomLevel = 9;

    /// The picture that is opened.
    void Show(const QImage& picture);
    /// Another one in its place, as one more step: undoing it brings back what was there.
    void ShowInstead(const QImage& picture);
    void Undo();
    void Redo();
    /// By one level up or down, as far as there is one. From the fitted view it is the next level whose factor is
    /// larger or smaller than that of the view. What is seen at `place` of the canvas stays there, else what is in the
    /// middle.
    void Zoom(int step, std::optional<QPointF> place = {});
    bool CanZoom(int step) const { return NextLevel(step) != 0; }
    /// The view of the opening, in which the picture can be marked.
    void Fit();
    /// Shown size of the picture in hundredths of its own.
    int Percent() const { return qRound(m_imgMain->ViewScale() * 100); }
    /// The last step stands in the picture, without what is being drawn.
    void ShowLastStep();

    /// A stroke under way stays what it was begun as: false then.
    bool setTool(DrawingTool tool);
    /// The platform's number.
    int Colour() const { return m_colour; }
    void setColour(int colour) { m_colour = colour; }

    bool IsDrawing() const { return m_isDrawing; }
    /// A text is being typed.
    bool IsTyping() const { return m_textOpen; }
    /// A text entry that is open ends without a drawing, as if its press had not been.
    void LeaveTextEntry();

Q_SIGNALS:
    /// Where undo and redo may go.
    void ChainChanged();
    /// How large the picture is shown, and where a step of the zoom may go.
    void ViewChanged();

private:
    void OnPress(int button, float x, float y);
    void OnMove(float x, float y);
    void OnRelease(int button, float x, float y);
    void FinishStroke();
    void OpenTextBox();
    void OnTextEntered();
    void ShowPointer();
    /// The picture as it is now goes to the holder of the present step.
    void KeepStep();
    void ShowHolder(int holder);
    /// Where a step of the zoom leads; 0 where there is no level any more.
    int NextLevel(int step) const;

    ImagXpress* m_imgMain = nullptr;
    std::array<ImagXpress*, SnapshotChain::Holders> m_imgImage{};
    TextEntryBox* m_txtText = nullptr;

    SnapshotChain m_chain;
    DrawingTool m_tool = ToolFree;
    int m_colour = 0;
    int m_zoomLevel = 5;
    bool m_isFitted = true; ///< Whatever the level: undo, redo and save fit the picture, and leave the level as it is.
    bool m_isDrawing = false;
    bool m_isFirstMove = false;
    bool m_textOpen = false;
    QPointF m_start; ///< Picture pixels.
    QPointF m_end;
    QPointF m_textPoint;
};
