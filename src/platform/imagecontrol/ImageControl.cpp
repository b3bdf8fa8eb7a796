#include "platform/imagecontrol/ImageControl.h"

#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "frame/colours.h"
#include "frame/components.h"
#include "frame/services.h"
#include "frame/wrapped_text.h"
#include "platform/imagecontrol/register_image_control.h"
#include "platform/imaging/jpeg_file.h"

#include <QBuffer>
#include <QFontMetricsF>
#include <QImageWriter>
#include <QPainter>
#include <QScrollBar>

#include <cmath>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {
constexpr int JpegQuality = 90;
constexpr int BarPixels = 15;
/// Points in the height of a picture, so that a text takes the same share of a large one as of a small one.
constexpr qreal PointsInHeight = 360;
/// Pens' units in the height of a picture.
constexpr double PenUnitsInHeight = 480;
/// A point is no smaller than at 96 dots an inch, whatever the picture.
constexpr qreal SmallestPoint = 96.0 / 72.0;

/// Numbers reach the control as floating ones.
QRgb ColourOfNumber(double number)
{
    return ColourOf(static_cast<int>(qBound(0.0, number, double(0xFFFFFF))));
}

QImage OnWhite(const QImage& picture)
{
    if (!picture.hasAlphaChannel())
        return picture.convertToFormat(QImage::Format_RGB32);
    QImage opaque(picture.size(), QImage::Format_RGB32);
    opaque.fill(Qt::white);
    QPainter(&opaque).drawImage(0, 0, picture);
    return opaque;
}
} // namespace

ImageControl::ImageControl()
    : m_horizontalBar(new QScrollBar(Qt::Horizontal, this)), m_verticalBar(new QScrollBar(Qt::Vertical, this))
{
    m_view.setBarWidth(BarPixels);
    for (QScrollBar* bar : {m_horizontalBar, m_verticalBar}) {
        bar->hide();
        bar->setCursor(Qt::ArrowCursor);
        connect(bar, &QScrollBar::valueChanged, this, [this] {
            m_view.setOrigin({m_horizontalBar->value(), m_verticalBar->value()});
            update();
        });
    }
}

void ImageControl::KeepAside()
{
    m_aside = std::make_unique<AsidePicture>();
    KeepAsidePicture(std::exchange(m_picture, QImage()));
}

void ImageControl::KeepAsidePicture(const QImage& picture)
{
    QList<const AsidePicture*> others;
    for (const auto* other : parent() != nullptr ? parent()->findChildren<ImageControl*>() : QList<ImageControl*>()) {
        if (other->m_aside)
            others << other->m_aside.get();
    }
    m_aside->Keep(picture, others);
}

void ImageControl::setPicture(const QImage& picture)
{
    if (m_aside) {
        KeepAsidePicture(picture);
        return;
    }
    const bool sameSize = picture.size() == m_picture.size();
    m_original.clear();
    m_picture = picture;
    // What the screen paints fastest, and whose pixels are whole words.
    if (!m_picture.isNull() && m_picture.depth() != 32)
        m_picture.convertTo(m_picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    m_picture.setDevicePixelRatio(1);
    m_reduced.MarkChanged(m_picture.rect());
    if (!sameSize)
        LayOutView();
    update();
}

void ImageControl::setSourceFile(const QString& path)
{
    setPicture(QImage());
    if (path.isEmpty())
        return;
    const ForeignPicture file = Pictures().LoadForeign(path);
    setPicture(file.picture);
    m_original = file.original;
}

qreal ImageControl::PointSize() const
{
    return qMax(SmallestPoint, m_picture.height() / PointsInHeight);
}

void ImageControl::setTargetFileType(int type)
{
    // Every code stands for the one format that is written.
    Q_UNUSED(type);
    m_writesFullColour = true;
}

QByteArray ImageControl::TargetContent() const
{
    if (IsEmpty())
        throw PlatformError(u"저장할 그림이 없습니다.!!"_s);
    // Written anew it would come out smaller than it is.
    if (!m_original.isEmpty())
        return m_original;
    if (m_writesFullColour) {
        QByteArray written = jpegfile::Encode(OnWhite(Picture()), JpegQuality);
        if (written.isEmpty())
            throw PlatformError(u"그림을 저장할 수 없습니다.!!"_s);
        return written;
    }
    QByteArray content;
    QBuffer buffer(&content);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(JpegQuality);
    // What is written is whole, whatever the file was that it came from.
    QImage whole = OnWhite(Picture());
    if (!CutFileName(whole).isEmpty())
        MarkCut(whole, QString());
    if (!writer.write(whole))
        throw PlatformError(u"그림을 저장할 수 없습니다.!! (%1)"_s.arg(writer.errorString()));
    return content;
}

void ImageControl::WriteTargetFile()
{
    WriteWholeFile(m_targetFile, TargetContent());
}

void ImageControl::ZoomToFit(int mode)
{
    Q_UNUSED(mode);
    m_view.Fit();
    LayOutView();
}

void ImageControl::ScaleBy(float factor)
{
    m_view.ScaleBy(static_cast<double>(factor));
    LayOutView();
}

void ImageControl::ScaleAround(float factor, QPointF place)
{
    m_view.ScaleBy(static_cast<double>(factor), place);
    LayOutView();
}

void ImageControl::setPointerStyle(int pointer)
{
    switch (pointer) {
    case PointerCross:
    case PointerPencil:
        setCursor(Qt::CrossCursor);
        break;
    case PointerHand:
        setCursor(Qt::OpenHandCursor);
        break;
    case PointerText:
        setCursor(Qt::IBeamCursor);
        break;
    default:
        setCursor(Qt::ArrowCursor);
    }
}

// The frame is the widget itself, as its form laid it out: a zoom step's numbers neither shrink nor move it.
void ImageControl::setFrameWidth(float width)
{
    Q_UNUSED(width);
}

void ImageControl::setFrameHeight(float height)
{
    Q_UNUSED(height);
}

void ImageControl::DrawLine(float x1, float y1, float x2, float y2, double colour)
{
    const auto line = m_drawStyle == DrawStyleDot ? outline::DottedLine : outline::Line;
    Draw(line(QPointF(x1, y1), QPointF(x2, y2), PenPixels(), m_picture.size()), colour);
}

void ImageControl::DrawRoundRect(float x1, float y1, float x2, float y2, int roundX, int roundY, double colour)
{
    Draw(outline::Box(QPointF(x1, y1), QPointF(x2, y2), roundX, roundY, PenPixels(), m_picture.size()), colour);
}

void ImageControl::DrawArc(float x1, float y1, float x2, float y2, int /*start*/, int /*end*/, double colour)
{
    Draw(outline::Ellipse(QPointF(x1, y1), QPointF(x2, y2), PenPixels(), m_picture.size()), colour);
}

void ImageControl::DrawText(float x, float y, const QString& text, double colour)
{
    if (m_picture.isNull())
        return;
    MakeDrawable();
    QFont font = m_drawFont;
    if (font.pointSizeF() > 0)
        font.setPixelSize(qMax(1, qRound(font.pointSizeF() * PointSize())));
    font.setStrikeOut(false);
    const WrappedText wrapped = WrapInto(text, font, m_picture.size());
    const QFontMetricsF metrics(wrapped.font, &m_picture);
    const QPointF corner = MovedIn({QPointF(x, y), wrapped.size}, QRectF(m_picture.rect()));
    QPainter painter(&m_picture);
    painter.setFont(wrapped.font);
    painter.setPen(QColor(ColourOfNumber(colour)));
    for (qsizetype line = 0; line < wrapped.lines.size(); ++line)
        painter.drawText(corner + QPointF(0, metrics.ascent() + static_cast<qreal>(line) * metrics.height()),
                         wrapped.lines[line]);
    painter.end();
    const QRectF box(corner, wrapped.size);
    const qreal height = metrics.height();
    // Slanted letters and accents reach beyond their box.
    ShowPart(box.adjusted(-height, -height, height, height).toAlignedRect());
}

int ImageControl::PenPixels() const
{
    return qRound(m_drawWidth * qMax(1.0, m_picture.height() / PenUnitsInHeight));
}

void ImageControl::Draw(const outline::Spans& spans, double colour)
{
    if (spans.empty())
        return;
    MakeDrawable();
    if (m_drawMode == DrawModeInvert)
        outline::Invert(m_picture, spans);
    else
        outline::Paint(m_picture, spans, ColourOfNumber(colour));
    // A shown pixel is mixed from its neighbours, too.
    const int margin = static_cast<int>(std::ceil(3 / m_view.Scale())) + 1;
    ShowPart(outline::Covered(spans, m_picture.size(), margin));
}

void ImageControl::MakeDrawable()
{
    m_original.clear();
    if (m_picture.format() != QImage::Format_RGB32)
        m_picture = OnWhite(m_picture);
}

void ImageControl::ShowPart(const QRegion& pictureParts)
{
    m_reduced.MarkChanged(pictureParts);
    if (!isVisible())
        return;
    // Edges that two parts share stay shared, so the rectangles remain in the order that a region needs.
    std::vector<QRect> changed;
    const auto edge = [this](QPoint corner) {
        const QPointF place = m_view.ViewFromPicture(QPointF(corner));
        return QPoint(static_cast<int>(std::floor(place.x())), static_cast<int>(std::floor(place.y())));
    };
    for (const QRect& part : pictureParts) {
        const QRect shown(edge(part.topLeft()), edge(part.bottomRight() + QPoint(1, 1)) - QPoint(1, 1));
        if (!shown.isEmpty())
            changed.push_back(shown);
    }
    QRegion region;
    region.setRects(changed.data(), static_cast<int>(changed.size()));
    update(region);
}

void ImageControl::LayOutView()
{
    m_view.setSizes(m_picture.size(), size());
    const QSize room = m_view.Room();
    const QPoint last = m_view.LastOrigin();
    const QPoint origin = m_view.Origin();
    m_horizontalBar->setGeometry(0, height() - BarPixels, room.width(), BarPixels);
    m_verticalBar->setGeometry(width() - BarPixels, 0, BarPixels, room.height());
    m_horizontalBar->setRange(0, last.x());
    m_verticalBar->setRange(0, last.y());
    m_horizontalBar->setPageStep(room.width());
    m_verticalBar->setPageStep(room.height());
    m_horizontalBar->setValue(origin.x());
    m_verticalBar->setValue(origin.y());
    m_horizontalBar->setVisible(m_view.NeedsHorizontalBar());
    m_verticalBar->setVisible(m_view.NeedsVerticalBar());
    update();
}

void RegisterImageControl()
{
    RegisterComponent<ImagXpress>(u"IMAGXPR6LibCtl.ImagXpress"_s, [] { return std::make_unique<ImageControl>(); });
}
