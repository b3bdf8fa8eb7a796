#pragma once

#include <QImage>
#include <QWidget>

/// One picture that the operator looks at closely: the wheel zooms to the pointer, dragging moves, a double click shows
/// the whole. Nothing is changed. It takes the keyboard by a click alone.
///
/// A zoom is how many device pixels a pixel of the picture takes. At 1 they are those of the picture, byte for byte.
class PictureCanvas : public QWidget
{
    Q_OBJECT

public:
    explicit PictureCanvas(QWidget* parent);

    static constexpr double LargestZoom = 8;
    static constexpr double ZoomStep = 1.25;

    /// With `keepView` the zoom stays, and the part of the picture that is seen.
    void ShowPicture(const QImage& picture, bool keepView);
    /// The same picture at a half, a quarter and so on: what is shown smaller is made from it.
    void setReduced(const QList<QImage>& reduced) { m_reduced = reduced, update(); }
    /// Takes the picture's place.
    void ShowText(const QString& text);
    const QImage& Picture() const { return m_picture; }
    /// Of two, it is the one that buttons and lenses go to.
    void setMarked(bool marked);

    double Zoom() const { return m_zoom; }
    /// To that zoom, as far as it may go; the point of the canvas, in device pixels, keeps its place in the picture.
    void ZoomTo(double zoom, QPointF about);
    void ShowWhole();
    /// Pixel for pixel, about the middle.
    void ShowPixels();
    /// Place in the picture, in its pixels, of a point of the canvas in device pixels.
    QPointF PictureFromCanvas(QPointF point) const { return (point - m_corner) / m_zoom; }

    /// What is seen of a picture of any size.
    struct View
    {
        double zoom = 1; ///< By that of the whole picture.
        QPointF centre;  ///< In parts of the picture's width and height.
        bool isPixels = false;
    };
    View Seen() const;
    /// Tells nobody.
    void See(const View& view);

Q_SIGNALS:
    void ViewChanged();
    void Pressed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    QSizeF DevicePixels() const { return QSizeF(size()) * devicePixelRatioF(); }
    double WholeZoom() const;
    void SetZoom(double zoom, QPointF about);
    void SetWhole();
    /// No side of the canvas is empty that the picture could fill.
    void KeepInside();

    QImage m_picture;
    QList<QImage> m_reduced;
    QString m_text;
    double m_zoom = 1;
    QPointF m_corner; ///< Of the picture, in device pixels of the canvas.
    bool m_isWhole = true;
    bool m_isMarked = false;
    int m_wheel = 0; ///< Turned, and not enough for a step.
    QPointF m_draggedFrom;
};
