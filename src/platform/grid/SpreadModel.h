#pragma once

#include "platform/grid/SpreadCells.h"

#include <QAbstractTableModel>
#include <QRect>

/// A grid's cells for its view. Rows and columns count from 0. What was written is told to the view when events are
/// served next, all of it at once, and the view paints only what it shows.
class SpreadModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    const SpreadCells& Cells() const { return m_cells; }

    void SetRows(int rows);
    void SetColumns(int columns);
    void RemoveRows(int first, int count);
    void SetHeadings(const QStringList& headings);
    void SetStoredType(int column, bool odd, SpreadCellType type);
    void Clear(int firstRow, int firstColumn, int lastRow, int lastColumn, bool dataOnly);

    template <class Change>
    void Write(int row, int column, Change&& change)
    {
        if (!m_cells.Contains(row, column))
            return;
        m_cells.Write(row, column, std::forward<Change>(change));
        if (m_written.isEmpty())
            QMetaObject::invokeMethod(this, &SpreadModel::TellWritten, Qt::QueuedConnection);
        m_written |= QRect(column, row, 1, 1);
    }

private:
    QString SpokenText(const QModelIndex& index, const SpreadCell& cell, SpreadCellType type) const;

    void TellWritten();

    SpreadCells m_cells;
    QRect m_written; ///< Cells that the view hasn't been told of: x is the column, y the row.
    QStringList m_headings;
};
