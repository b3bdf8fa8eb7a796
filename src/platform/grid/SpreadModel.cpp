#include "platform/grid/SpreadModel.h"

#include <utility>

using namespace Qt::StringLiterals;

int SpreadModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_cells.Rows();
}

int SpreadModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_cells.Columns();
}

QVariant SpreadModel::data(const QModelIndex& index, int role) const
{
    static const SpreadCell Untouched;
    const SpreadCell* found = m_cells.Find(index.row(), index.column());
    const SpreadCell& cell = found != nullptr ? *found : Untouched;
    const SpreadCellType type = m_cells.TypeOf(index.row(), index.column());
    switch (role) {
    case Qt::DisplayRole:
        // The text of a picture cell is its user's own affair, a path for example.
        return type == CellTypePicture ? QString() : cell.text;
    case Qt::AccessibleTextRole:
        return SpokenText(index, cell, type);
    case Qt::CheckStateRole:
        if (type == CellTypeCheckBox)
            return cell.ticked ? Qt::Checked : Qt::Unchecked;
        return {};
    case Qt::TextAlignmentRole:
        return QVariant(type == CellTypeStaticText ? Qt::AlignCenter : Qt::AlignLeft | Qt::AlignVCenter);
    default:
        return {};
    }
}

QString SpreadModel::SpokenText(const QModelIndex& index, const SpreadCell& cell, SpreadCellType type) const
{
    if (type == CellTypeCheckBox)
        return cell.ticked ? u"선택됨"_s : u"선택 안 됨"_s;
    if (type != CellTypePicture)
        return cell.text;
    if (cell.picture == nullptr || !cell.picture->given)
        return {};
    QStringList words{cell.picture->image.isNull() ? u"그림 없음"_s : u"그림"_s};
    // Its number stands below it.
    if (const SpreadCell* below = m_cells.Find(index.row() + 1, index.column()); below != nullptr)
        words << below->text;
    words << cell.picture->mark << (cell.picture->meant ? u"고른 그림"_s : QString());
    words.removeAll(QString());
    return words.join(u' ');
}

QVariant SpreadModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return section + 1;
    return m_headings.value(section);
}

Qt::ItemFlags SpreadModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags usual = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    return m_cells.TypeOf(index.row(), index.column()) == CellTypeCheckBox ? usual | Qt::ItemIsUserCheckable : usual;
}

void SpreadModel::TellWritten()
{
    const QRect inside = std::exchange(m_written, {}) & QRect(0, 0, m_cells.Columns(), m_cells.Rows());
    if (!inside.isEmpty())
        Q_EMIT dataChanged(index(inside.top(), inside.left()), index(inside.bottom(), inside.right()));
}

void SpreadModel::SetRows(int rows)
{
    if (rows > m_cells.Rows()) {
        beginInsertRows({}, m_cells.Rows(), rows - 1);
        m_cells.SetRows(rows);
        endInsertRows();
    } else if (rows < m_cells.Rows()) {
        RemoveRows(rows, m_cells.Rows() - rows);
    }
}

void SpreadModel::SetColumns(int columns)
{
    if (columns > m_cells.Columns()) {
        beginInsertColumns({}, m_cells.Columns(), columns - 1);
        m_cells.SetColumns(columns);
        endInsertColumns();
    } else if (columns < m_cells.Columns()) {
        beginRemoveColumns({}, columns, m_cells.Columns() - 1);
        m_cells.SetColumns(columns);
        endRemoveColumns();
    }
}

void SpreadModel::RemoveRows(int first, int count)
{
    beginRemoveRows({}, first, first + count - 1);
    m_cells.RemoveRows(first, count);
    endRemoveRows();
}

void SpreadModel::SetHeadings(const QStringList& headings)
{
    m_headings = headings;
    if (m_cells.Columns() > 0)
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, m_cells.Columns() - 1);
}

void SpreadModel::SetStoredType(int column, bool odd, SpreadCellType type)
{
    m_cells.SetStoredType(column, odd, type);
    if (m_cells.Contains(0, column))
        Q_EMIT dataChanged(index(0, column), index(m_cells.Rows() - 1, column));
}

void SpreadModel::Clear(int firstRow, int firstColumn, int lastRow, int lastColumn, bool dataOnly)
{
    m_cells.Clear(firstRow, firstColumn, lastRow, lastColumn, dataOnly);
    Q_EMIT dataChanged(index(firstRow, firstColumn), index(lastRow, lastColumn));
}
