#pragma once

#include "contracts/fpSpread.h"

#include <array>
#include <memory>
#include <vector>

struct CellPicture
{
    QImage image;
    QString mark;       ///< Words over its lower edge.
    bool given = false; ///< A picture was set, if only one that can't be shown.
    bool center = false;
    bool stretch = false;
    bool meant = false; ///< A menu or a question is about it.
};

struct SpreadCell
{
    QString text;
    std::unique_ptr<CellPicture> picture;
    int type = 0; ///< A SpreadCellType, or 0 for the type that the cell's place has stored.
    bool ticked = false;

    bool HasData() const { return !text.isEmpty() || ticked || (picture != nullptr && picture->given); }
    CellPicture& Picture();
};

/// What a grid holds. Rows and columns count from 0 here. A row takes memory from the first write into it.
class SpreadCells
{
public:
    int Rows() const { return static_cast<int>(m_rows.size()); }
    int Columns() const { return static_cast<int>(m_storedTypes.size()); }
    bool Contains(int row, int column) const;

    /// Rows and columns beyond the new number go with what they hold.
    void SetRows(int rows);
    void SetColumns(int columns);
    /// The range must lie inside.
    void RemoveRows(int first, int count);

    /// Type of a column's cells that have none of their own. `odd` counts rows from 1, as the grid's users do.
    void SetStoredType(int column, bool odd, SpreadCellType type);
    SpreadCellType TypeOf(int row, int column) const;

    /// Null for a cell that was never written, or lies outside.
    const SpreadCell* Find(int row, int column) const;
    /// Hands the cell to `change`; nothing happens outside the grid.
    template <class Change>
    void Write(int row, int column, Change&& change)
    {
        if (!Contains(row, column))
            return;
        SpreadCell& cell = Touch(row, column);
        const bool before = cell.HasData();
        change(cell);
        CountData(row, before, cell.HasData());
    }

    /// The block must lie inside.
    void Clear(int firstRow, int firstColumn, int lastRow, int lastColumn, bool dataOnly);

    /// Number of rows up to the last one that holds data.
    int DataRows() const { return m_dataRows; }

private:
    struct Row
    {
        std::vector<SpreadCell> cells; ///< None, or one for each column.
        int filled = 0;                ///< Cells that hold data.
    };

    SpreadCell& Touch(int row, int column);
    void CountData(int row, bool before, bool after);
    void DropEmptyDataRows();

    std::vector<std::unique_ptr<Row>> m_rows;
    std::vector<std::array<SpreadCellType, 2>> m_storedTypes;
    int m_dataRows = 0;
};
