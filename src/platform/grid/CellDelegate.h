#pragma once

#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

/// Paints the cells of a grid: text, picture, tick box, and the frames of a cell that was just filled and of a picture
/// that is meant.
class CellDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// The part of a cell in which its picture stands.
    static QRect PictureRoom(const QRect& cell) { return cell.adjusted(1, 1, -1, -1); }

    void SetFlashing(const QPersistentModelIndex& index) { m_flashing = index; }
    const QPersistentModelIndex& Flashing() const { return m_flashing; }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

private:
    QPersistentModelIndex m_flashing;
};
