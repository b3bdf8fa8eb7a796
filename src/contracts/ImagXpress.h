#pragma once

#include <QImage>
#include <QWidget>

class QFont;

/// Numbers that the image control takes.
enum ImageDrawMode : int { DrawModeInvert = 6, DrawModeCopy = 13 };
enum ImageDrawStyle : int { DrawStyleSolid = 1, DrawStyleDot = 2 };
enum ImagePointer : int { PointerArrow = 1, PointerCross = 2, PointerHand = 3, PointerText = 4, PointerPencil = 35 };

/// `IMAGXPR6LibCtl.ImagXpress`: the control that holds and shows one picture. A picture is a value: what is assigned is
/// the control's own, and memory is shared only until one of the two is drawn on.
///
/// Drawing paints at once into the picture, in picture pixels, and shows without `Refresh`. A colour is the platform's
/// number, red in the low byte: 65535 is yellow. Corners may come in any order and lie outside the picture.
class ImagXpress : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// Null for an empty control. Read gives the picture with all that was drawn on it.
    virtual QImage Picture() const = 0;
    virtual bool IsEmpty() const = 0;
    virtual void setPicture(const QImage& picture) = 0;
    /// Loads that file, upright, in whatever picture format it is. An empty text empties the control; so does a file
    /// that can't be read, and then PlatformError is thrown with the reason. Of a JPEG so large that it is shown at a
    /// lower scale the control keeps the file, and writes that until it is drawn on.
    virtual void setSourceFile(const QString& path) = 0;

    virtual void setTargetFile(const QString& path) = 0;
    /// 8 is JPEG at quality 90 whose colours are as fine as its brightness, so that a coloured mark leaves no halo
    /// around it. When nothing was set, it is JPEG at that quality with colours of half the resolution.
    virtual void setTargetFileType(int type) = 0;
    /// Writes the picture whole or not at all, replacing what is there. Throws PlatformError, also for an empty
    /// control.
    virtual void WriteTargetFile() = 0;
    /// What `WriteTargetFile` would write, for a caller with a way of its own to bring it under its name. Throws
    /// PlatformError.
    virtual QByteArray TargetContent() const = 0;

    /// With 2: shows the picture fitted to the frame, its shape kept.
    virtual void ZoomToFit(int mode) = 0;
    /// Shows the picture at that factor of its natural size, with scroll bars where it is larger than the frame.
    virtual void ScaleBy(float factor) = 0;
    /// The same; what is seen at that place of the widget stays there, as far as the picture reaches.
    virtual void ScaleAround(float factor, QPointF place) = 0;
    virtual void Refresh() = 0;
    virtual void setPointerStyle(int pointer) = 0;
    /// The frame's size as the forms set it. The place on the form is the form's own matter.
    virtual void setFrameWidth(float width) = 0;
    virtual void setFrameHeight(float height) = 0;

    /// Place of a point of the picture inside the widget, and back, by the present view. In pixels.
    virtual QPointF ViewFromPicture(QPointF point) const = 0;
    virtual QPointF PictureFromView(QPointF point) const = 0;
    /// The part of the widget in which the picture is seen, without what lies beside it.
    virtual QRect ShownPart() const = 0;
    /// Shown size of one picture pixel, in widget pixels.
    virtual qreal ViewScale() const = 0;
    /// Size of a font's point, in pixels of the picture: 1/360 of its height, at least 4/3.
    virtual qreal PointSize() const = 0;

    /// The control is never shown, and only what its picture has other than those of its likes beside it takes memory:
    /// `Picture` puts it together anew at each call.
    virtual void KeepAside() = 0;

    virtual void setDrawMode(int mode) = 0;
    virtual void setDrawStyle(int style) = 0;
    /// In units of 1/480 of the picture's height, but of a pixel at least: as broad in a large picture as in a small
    /// one.
    virtual void setDrawWidth(int units) = 0;
    virtual void DrawLine(float x1, float y1, float x2, float y2, double colour) = 0;
    /// A box when both roundings are 0.
    virtual void DrawRoundRect(float x1, float y1, float x2, float y2, int roundX, int roundY, double colour) = 0;
    /// The ellipse in that box.
    virtual void DrawArc(float x1, float y1, float x2, float y2, int start, int end, double colour) = 0;
    /// Text with its upper left corner at the point, in the drawing font. What would reach beyond the picture moves in,
    /// is wrapped where it is broader than the picture, and gets smaller where even then it is too high.
    virtual void DrawText(float x, float y, const QString& text, double colour) = 0;
    /// Sizes are points of `PointSize` each. Strikethrough is not drawn.
    virtual QFont DrawFont() const = 0;
    virtual void setDrawFont(const QFont& font) = 0;

Q_SIGNALS:
    /// Button 1 is the left one. X and Y are twips of the picture's own pixels from its corner, whatever the view:
    /// where a point is marked is where it was pressed.
    void MouseDown(int button, int shift, float x, float y);
    void MouseMove(int button, int shift, float x, float y);
    void MouseUp(int button, int shift, float x, float y);
    /// The wheel was turned with Ctrl held, by notches away from the operator, or towards him where negative.
    void ZoomTurned(int notches, QPointF place);
};
