#pragma once

#include "contracts/ImagXpress.h"
#include "platform/imagecontrol/AsidePicture.h"
#include "platform/imagecontrol/outline.h"
#include "platform/imagecontrol/PictureView.h"
#include "platform/imagecontrol/ReducedPicture.h"

#include <QFont>

#include <memory>
#include <optional>

class QScrollBar;

/// The image control on a raster picture. A fresh one shows its picture fitted to the frame.
class ImageControl final : public ImagXpress
{
    Q_OBJECT

public:
    ImageControl();

    QImage Picture() const override { return m_aside ? m_aside->Picture() : m_picture; }
    bool IsEmpty() const override { return m_aside ? m_aside->IsEmpty() : m_picture.isNull(); }
    void KeepAside() override;
    void setPicture(const QImage& picture) override;
    void setSourceFile(const QString& path) override;

    void setTargetFile(const QString& path) override { m_targetFile = path; }
    void setTargetFileType(int type) override;
    void WriteTargetFile() override;
    QByteArray TargetContent() const override;

    void ZoomToFit(int mode) override;
    void ScaleBy(float factor) override;
    void ScaleAround(float factor, QPointF place) override;
    void Refresh() override { update(); }
    void setPointerStyle(int pointer) override;
    void setFrameWidth(float width) override;
    void setFrameHeight(float height) override;

    QPointF ViewFromPicture(QPointF point) const override { return m_view.ViewFromPicture(point); }
    QPointF PictureFromView(QPointF point) const override { return m_view.PictureFromView(point); }
    QRect ShownPart() const override { return m_view.Seen(); }
    qreal ViewScale() const override { return m_view.Scale(); }
    qreal PointSize() const override;

    void setDrawMode(int mode) override { m_drawMode = mode; }
    void setDrawStyle(int style) override { m_drawStyle = style; }
    void setDrawWidth(int units) override { m_drawWidth = qBound(1, units, 100); }
    void DrawLine(float x1, float y1, float x2, float y2, double colour) override;
    void DrawRoundRect(float x1, float y1, float x2, float y2, int roundX, int roundY, double colour) override;
    void DrawArc(float x1, float y1, float x2, float y2, int start, int end, double colour) override;
    void DrawText(float x, float y, const QString& text, double colour) override;
    QFont DrawFont() const override { return m_drawFont; }
    void setDrawFont(const QFont& font) override { m_drawFont = font; }

    QSize sizeHint() const override { return m_picture.size(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    using MouseSignal = void (ImagXpress::*)(int, int, float, float);
    void Tell(MouseSignal signal, int button, const QMouseEvent& event);
    /// Draws the figure by the present mode, and shows what changed.
    void Draw(const outline::Spans& spans, double colour);
    void ShowPart(const QRegion& pictureParts);
    void MakeDrawable();
    int PenPixels() const;
    void ScrollBy(QPoint way);
    void KeepAsidePicture(const QImage& picture);
    void LayOutView();

    QImage m_picture;
    QByteArray m_original; ///< The file behind a picture that is shown at a lower scale, until something is drawn.
    QString m_targetFile;
    bool m_writesFullColour = false;
    std::unique_ptr<AsidePicture> m_aside; ///< In the place of `m_picture`.
    PictureView m_view;
    ReducedPicture m_reduced;
    QScrollBar* m_horizontalBar;
    QScrollBar* m_verticalBar;
    int m_drawMode = DrawModeCopy;
    int m_drawStyle = DrawStyleSolid;
    int m_drawWidth = 1;
    QFont m_drawFont;
    std::optional<QPoint> m_dragged; ///< Where the wheel button drags the picture from; of the widget.
    int m_turned = 0;                ///< Of a notch of the wheel, with Ctrl held.
};
