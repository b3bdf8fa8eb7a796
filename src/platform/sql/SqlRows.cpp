#include "platform/sql/SqlRows.h"

#include "frame/guard.h"

#include <QSqlQuery>
#include <QSqlRecord>

namespace {
/// The station knows texts and numbers. The drivers give bytes for a text of a binary collation, and whole numbers in
/// as many widths as there are column types.
QVariant StationValue(QVariant value)
{
    if (value.isNull())
        return {};
    switch (value.typeId()) {
    case QMetaType::QByteArray:
        return QString::fromUtf8(value.toByteArray());
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
        return value.toLongLong();
    default:
        return value;
    }
}
} // namespace

void SqlRows::Begin(QSqlQuery& query)
{
    m_isSelect = query.isSelect();
    if (!m_isSelect)
        return;
    const QSqlRecord record = query.record();
    for (int column = 0; column < record.count(); ++column)
        m_columns.append(record.fieldName(column));
}

bool SqlRows::TakeBlock(QSqlQuery& query)
{
    auto block = std::make_shared<QList<QVariant>>();
    qsizetype rows = 0;
    bool goesOn = m_isSelect;
    while (goesOn && rows < RowsInBlock) {
        goesOn = query.next();
        if (!goesOn)
            break;
        ++rows;
        for (int column = 0; column < m_columns.size(); ++column)
            block->append(StationValue(query.value(column)));
    }
    const std::lock_guard lock(m_mutex);
    if (rows > 0)
        m_blocks.push_back(std::move(block));
    return goesOn && !m_isAbandoned;
}

void SqlRows::End(std::exception_ptr fault)
{
    const std::lock_guard lock(m_mutex);
    m_hasEnded = true;
    m_fault = std::move(fault);
}

bool SqlRows::Fetch(std::vector<Block>& blocks) const
{
    const std::lock_guard lock(m_mutex);
    blocks.insert(blocks.end(), m_blocks.begin() + static_cast<std::ptrdiff_t>(blocks.size()), m_blocks.end());
    guard::Rethrow(m_fault);
    return !m_hasEnded;
}

void SqlRows::Abandon()
{
    const std::lock_guard lock(m_mutex);
    m_isAbandoned = true;
}
