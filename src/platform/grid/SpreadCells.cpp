#include "platform/grid/SpreadCells.h"

#include <algorithm>

CellPicture& SpreadCell::Picture()
{
    if (picture == nullptr)
        picture = std::make_unique<CellPicture>();
    return *picture;
}

bool SpreadCells::Contains(int row, int column) const
{
    return row >= 0 && row < Rows() && column >= 0 && column < Columns();
}

void SpreadCells::SetRows(int rows)
{
    m_rows.resize(static_cast<size_t>(rows));
    m_dataRows = std::min(m_dataRows, rows);
    DropEmptyDataRows();
}

void SpreadCells::SetColumns(int columns)
{
    m_storedTypes.resize(static_cast<size_t>(columns), {CellTypeEdit, CellTypeEdit});
    for (const auto& row : m_rows) {
        if (row == nullptr || row->cells.size() <= static_cast<size_t>(columns))
            continue;
        row->cells.resize(static_cast<size_t>(columns));
        row->filled = static_cast<int>(std::ranges::count_if(row->cells, &SpreadCell::HasData));
    }
    DropEmptyDataRows();
}

void SpreadCells::RemoveRows(int first, int count)
{
    m_rows.erase(m_rows.begin() + first, m_rows.begin() + first + count);
    if (m_dataRows > first)
        m_dataRows = std::max(first, m_dataRows - count);
    DropEmptyDataRows();
}

void SpreadCells::SetStoredType(int column, bool odd, SpreadCellType type)
{
    if (column >= 0 && column < Columns())
        m_storedTypes[static_cast<size_t>(column)][odd ? 1 : 0] = type;
}

SpreadCellType SpreadCells::TypeOf(int row, int column) const
{
    if (!Contains(row, column))
        return CellTypeEdit;
    const SpreadCell* cell = Find(row, column);
    if (cell != nullptr && cell->type != 0)
        return static_cast<SpreadCellType>(cell->type);
    return m_storedTypes[static_cast<size_t>(column)][row % 2 == 0 ? 1 : 0];
}

const SpreadCell* SpreadCells::Find(int row, int column) const
{
    if (!Contains(row, column))
        return nullptr;
    const auto& held = m_rows[static_cast<size_t>(row)];
    if (held == nullptr || static_cast<size_t>(column) >= held->cells.size())
        return nullptr;
    return &held->cells[static_cast<size_t>(column)];
}

SpreadCell& SpreadCells::Touch(int row, int column)
{
    auto& held = m_rows[static_cast<size_t>(row)];
    if (held == nullptr)
        held = std::make_unique<Row>();
    if (held->cells.size() <= static_cast<size_t>(column))
        held->cells.resize(static_cast<size_t>(Columns()));
    return held->cells[static_cast<size_t>(column)];
}

void SpreadCells::CountData(int row, bool before, bool after)
{
    if (before == after)
        return;
    m_rows[static_cast<size_t>(row)]->filled += after ? 1 : -1;
    if (after)
        m_dataRows = std::max(m_dataRows, row + 1);
    else
        DropEmptyDataRows();
}

void SpreadCells::DropEmptyDataRows()
{
    while (m_dataRows > 0) {
        const auto& last = m_rows[static_cast<size_t>(m_dataRows) - 1];
        if (last != nullptr && last->filled > 0)
            return;
        --m_dataRows;
    }
}

void SpreadCells::Clear(int firstRow, int firstColumn, int lastRow, int lastColumn, bool dataOnly)
{
    // From below, so that the number of data rows sinks in one walk.
    for (int row = lastRow; row >= firstRow; --row) {
        Row* held = m_rows[static_cast<size_t>(row)].get();
        if (held == nullptr)
            continue;
        const int end = std::min(lastColumn + 1, static_cast<int>(held->cells.size()));
        for (int column = firstColumn; column < end; ++column) {
            SpreadCell& cell = held->cells[static_cast<size_t>(column)];
            if (cell.HasData())
                --held->filled;
            const int type = dataOnly ? cell.type : 0;
            cell = {};
            cell.type = type;
        }
    }
    DropEmptyDataRows();
}
