#include "platform/grid/CellDelegate.h"

#include "frame/colours.h"
#include "frame/plain_text.h"
#include "platform/grid/SpreadModel.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace {
constexpr int TextMargin = 4; // Pixels left and right of a text.

QString OneLine(const QString& text)
{
    QString line = ComposedText(text);
    line.replace(QLatin1String("\r\n"), QLatin1String(" "));
    line.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return line;
}

QRect TextRoom(const QRect& cell)
{
    return cell.adjusted(TextMargin, 0, -TextMargin, 0);
}

void PaintNoPicture(QPainter& painter, const QRect& room, const QColor& colour)
{
    const int side = qMin(room.height(), room.width()) / 2;
    QRect frame(0, 0, side * 4 / 3, side);
    frame.moveCenter(room.center());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, 1.5, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(frame, 2, 2);
    painter.drawLine(frame.bottomLeft() + QPoint(-3, 3), frame.topRight() + QPoint(3, -3));
}

void PaintPicture(QPainter& painter, const QRect& room, const CellPicture& picture)
{
    const qreal ratio = painter.device()->devicePixelRatioF();
    QSizeF size = QSizeF(picture.image.size()) / ratio;
    if (picture.stretch)
        size = QSizeF(picture.image.size().scaled(room.size() * ratio, Qt::KeepAspectRatio)) / ratio;
    QPointF corner = room.topLeft();
    if (picture.center) {
        // On whole device pixels, or the picture would be resampled.
        corner.rx() += qFloor((room.width() - size.width()) / 2 * ratio) / ratio;
        corner.ry() += qFloor((room.height() - size.height()) / 2 * ratio) / ratio;
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setClipRect(room);
    painter.drawImage(QRectF(corner, size), picture.image);
}

void PaintMark(QPainter& painter, const QRect& room, const QString& mark, const QStyleOptionViewItem& option)
{
    painter.setFont(option.font);
    QRect strip = room;
    strip.setTop(strip.bottom() - option.fontMetrics.height() - 1);
    painter.setClipping(false);
    painter.fillRect(strip, QColor(NoticeColour));
    painter.setPen(QColor(NoticeTextColour));
    painter.drawText(strip, Qt::AlignCenter | Qt::TextSingleLine,
                     option.fontMetrics.elidedText(mark, Qt::ElideRight, strip.width()));
}

void PaintTickBox(QPainter& painter, const QRect& cell, bool ticked, const QPalette& palette)
{
    const int side = qBound(7, qMin(cell.width(), cell.height()) - 3, 13);
    QRectF box(0, 0, side, side);
    box.moveCenter(QRectF(cell).center());
    box.moveTopLeft(box.topLeft().toPoint() + QPointF(0.5, 0.5));
    box.setSize({side - 1.0, side - 1.0});
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(ticked ? QColor(AccentColour) : palette.color(QPalette::Text), 1));
    painter.setBrush(ticked ? QBrush(QColor(AccentColour)) : Qt::NoBrush);
    painter.drawRoundedRect(box, 1.5, 1.5);
    if (!ticked)
        return;
    const QPointF at = box.topLeft();
    const QPointF mark[] = {at + QPointF(0.22, 0.52) * box.width(), at + QPointF(0.43, 0.74) * box.width(),
                            at + QPointF(0.80, 0.28) * box.width()};
    painter.setPen(QPen(palette.color(QPalette::Base), 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(mark, 3);
}

void PaintFrame(QPainter& painter, const QRect& cell, const QColor& colour, int width)
{
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawRect(cell.left(), cell.top(), cell.width(), width);
    painter.drawRect(cell.left(), cell.bottom() - width + 1, cell.width(), width);
    painter.drawRect(cell.left(), cell.top(), width, cell.height());
    painter.drawRect(cell.right() - width + 1, cell.top(), width, cell.height());
}
/// The dark line keeps it apart from a bright picture.
void PaintMeant(QPainter& painter, const QRect& cell)
{
    PaintFrame(painter, cell, Qt::black, 5);
    PaintFrame(painter, cell, QColor(MeantColour), 4);
}
} // namespace

void CellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const SpreadCells& cells = static_cast<const SpreadModel*>(index.model())->Cells();
    const SpreadCell* cell = cells.Find(index.row(), index.column());
    const SpreadCellType type = cells.TypeOf(index.row(), index.column());
    const bool selected = option.state & QStyle::State_Selected;
    const QPalette& palette = option.palette;

    painter->save();
    painter->fillRect(option.rect, palette.brush(selected ? QPalette::Highlight : QPalette::Base));
    if (type == CellTypePicture) {
        if (cell != nullptr && cell->picture != nullptr && cell->picture->given) {
            const QRect room = PictureRoom(option.rect);
            if (cell->picture->image.isNull())
                PaintNoPicture(*painter, room, palette.color(QPalette::PlaceholderText));
            else
                PaintPicture(*painter, room, *cell->picture);
            if (!cell->picture->mark.isEmpty())
                PaintMark(*painter, room, cell->picture->mark, option);
        }
    } else if (type == CellTypeCheckBox) {
        PaintTickBox(*painter, option.rect, cell != nullptr && cell->ticked, palette);
    } else if (cell != nullptr && !cell->text.isEmpty()) {
        const QRect room = TextRoom(option.rect);
        const auto alignment = index.data(Qt::TextAlignmentRole).toInt();
        painter->setPen(palette.color(selected ? QPalette::HighlightedText : QPalette::Text));
        painter->setFont(option.font);
        // A text far longer than the cell would be measured whole.
        const QString line = OneLine(cell->text.left(room.width() + 1));
        painter->drawText(room, alignment | Qt::TextSingleLine,
                          option.fontMetrics.elidedText(line, Qt::ElideRight, room.width()));
    }
    painter->setClipping(false);
    if (selected && type == CellTypePicture)
        PaintFrame(*painter, option.rect, palette.color(QPalette::Highlight).lighter(150), 2);
    if (option.state & QStyle::State_HasFocus)
        PaintFrame(*painter, option.rect, QColor(AccentColour), 1);
    if (m_flashing.isValid() && m_flashing == index)
        PaintFrame(*painter, option.rect, QColor(AccentColour), 3);
    if (type == CellTypePicture && cell != nullptr && cell->picture != nullptr && cell->picture->meant)
        PaintMeant(*painter, option.rect);
    painter->restore();
}

bool CellDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                             const QModelIndex& index)
{
    const QString text = index.data(Qt::DisplayRole).toString();
    const bool cut =
        OneLine(text) != text || QFontMetrics(view->font()).horizontalAdvance(text) > TextRoom(option.rect).width();
    if (text.isEmpty() || !cut)
        QToolTip::hideText();
    else
        QToolTip::showText(event->globalPos(), ToolTipText(text), view->viewport());
    return true;
}
