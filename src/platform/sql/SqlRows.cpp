#include "platform/sql/SqlRows.h"

#include "frame/guard.h"
#include "platform/sql/RowSource.h"

void SqlRows::Begin(const RowSource& source)
{
    m_columns = source.Columns();
    m_affected = source.Affected();
    // Of a statement that is repeated, some may be there already; nobody has read them.
    const std::lock_guard lock(m_mutex);
    m_blocks.clear();
}

bool SqlRows::TakeBlock(RowSource& source)
{
    auto block = std::make_shared<QList<QVariant>>();
    qsizetype rows = 0;
    bool goesOn = true;
    while (goesOn && rows < RowsInBlock) {
        goesOn = source.Next(*block);
        rows += goesOn ? 1 : 0;
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
    const size_t held = blocks.size();
    blocks.insert(blocks.end(), m_blocks.begin() + static_cast<std::ptrdiff_t>(held), m_blocks.end());
    // The rows that came before a fault count.
    if (blocks.size() == held)
        guard::Rethrow(m_fault);
    return !m_hasEnded || m_fault != nullptr;
}

void SqlRows::Abandon()
{
    const std::lock_guard lock(m_mutex);
    m_isAbandoned = true;
}
