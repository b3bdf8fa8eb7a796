#include "platform/printing/PageCanvas.h"

#include "contracts/ImagXpress.h"
#include "platform/printing/PagePrinter.h"

#include <QFontMetricsF>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

constexpr int PlainRule = 4;
constexpr qreal HairlineTwips = 4;       // 0.2 points.
constexpr qreal NarrowestText = 1.0 / 3; // Nobody reads what is thinner.
constexpr qreal HighestText = 0.9;       // Of the height of its rows, so that texts one below the other don't touch.
constexpr int BlanksOfATab = 8;

/// The station installs one printer, and hands that one to its canvas.
PagePrinter& Page(PrinterObject& printer)
{
    auto* page = dynamic_cast<PagePrinter*>(&printer);
    Q_ASSERT(page != nullptr);
    return *page;
}

QRectF Box(const PrintGrid& grid, int row, int row2, int column, int column2)
{
    const auto x = [&grid](int index) { return grid.X.at(static_cast<size_t>(qBound(0, index, PrintGrid::Columns))); };
    const auto y = [&grid](int index) { return grid.Y.at(static_cast<size_t>(qBound(0, index, PrintGrid::Rows))); };
    return QRectF(QPointF(x(column), y(row)), QPointF(x(column2), y(row2)));
}

void DrawTextInBox(QPainter& painter, QFont font, const QString& given, const QRectF& box, const QString& alignment)
{
    const bool isUnderlined = font.underline();
    font.setUnderline(false);
    const QFontMetricsF metrics(font);
    // By the ink of a tall syllable: a font's leading lies above its letters alone, and would push them down onto the
    // rule below.
    const QRectF ink = metrics.tightBoundingRect(u"한"_s);
    // One that is too tall for its rows gets smaller, not squat.
    const qreal scale = box.isEmpty() ? 1.0 : qMin(1.0, HighestText * box.height() / ink.height());
    const qreal room = box.width() / scale;
    QString text = given;
    qreal width = metrics.horizontalAdvance(text);
    const qreal narrowed = width > room ? qMax(NarrowestText, room / width) : 1.0;
    if (width * NarrowestText > room) {
        text = metrics.elidedText(text, Qt::ElideRight, room / narrowed);
        width = metrics.horizontalAdvance(text);
    }
    const qreal across = width * narrowed * scale;
    qreal left = box.left();
    if (alignment == u"R"_s)
        left = box.right() - across;
    else if (alignment == u"C"_s)
        left = box.center().x() - across / 2;
    painter.translate(left, box.center().y() - ink.center().y() * scale);
    painter.scale(narrowed * scale, scale);
    painter.setFont(font);
    painter.drawText(QPointF(), text);
    if (isUnderlined) {
        // A font's own place for it runs through Korean syllables, which reach below the line of the Latin letters.
        const qreal below = metrics.tightBoundingRect(text + u"한"_s).bottom() + 2 * metrics.lineWidth();
        painter.fillRect(QRectF(0, below, width, metrics.lineWidth()), Qt::black);
    }
}

} // namespace

void PageCanvas::myCelText(const PrintGrid& grid, const QString& text, int row, int row2, int column, int column2,
                           PrinterObject& printer, const QString& alignment)
{
    PagePrinter& page = Page(printer);
    QString shown = text;
    shown.replace(u'\t', QString(BlanksOfATab, u' '));
    page.Draw([font = page.Font(), shown, box = Box(grid, row, row2, column, column2), alignment](QPainter& painter) {
        DrawTextInBox(painter, font, shown, box, alignment);
    });
}

void PageCanvas::myDrawBox(const PrintGrid& grid, int kind, int column, int row, int column2, int row2,
                           PrinterObject& printer)
{
    Page(printer).Draw([kind, box = Box(grid, row, row2, column, column2)](QPainter& painter) {
        painter.setPen(QPen(Qt::black, HairlineTwips));
        if (kind == PlainRule)
            painter.drawLine(box.topLeft(), box.bottomRight());
        else
            painter.drawRect(box);
    });
}

void PageCanvas::myDrawPic(const PrintGrid& grid, int row, int row2, int column, int column2, PrinterObject& printer,
                           const ImagXpress& picture)
{
    const QImage image = picture.Picture();
    PagePrinter& page = Page(printer);
    page.Draw([image, box = Box(grid, row, row2, column, column2)](QPainter& painter) {
        if (image.isNull())
            return;
        const QSizeF size = QSizeF(image.size()).scaled(box.size(), Qt::KeepAspectRatio);
        QRectF place(QPointF(), size);
        place.moveCenter(box.center());
        painter.drawImage(place, image);
    });
}
