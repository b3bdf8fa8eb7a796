#pragma once

#include "platform/grid/SpreadCells.h"

#include <QAbstractTableModel>

/// A grid's cells for its view. Rows and columns count from 0. What has changed is told to the view at once, cell by
/// cell, and the view paints only what it shows.
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
        const QModelIndex cell = index(row, column);
        Q_EMIT dataChanged(cell, cell);
    }

private:
    QString SpokenText(const SpreadCell& cell, SpreadCellType type) const;

    SpreadCells m_cells;
    QStringList m_headings;
};
