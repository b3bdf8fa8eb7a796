#pragma once

#include <QList>
#include <QStringList>
#include <QVariant>

#include <exception>
#include <memory>
#include <mutex>
#include <vector>

class RowSource;

/// The rows of one statement on their way from the connection's thread to the screen's. They lie in blocks, which never
/// change once they are there, so that a long result is neither copied nor moved.
class SqlRows
{
public:
    /// Values row by row: a list of its own for each row would cost a long result dearly.
    using Block = std::shared_ptr<const QList<QVariant>>;
    /// In each block but the last one.
    static constexpr qsizetype RowsInBlock = 512;

    // On the connection's thread.

    /// Takes down the columns of a statement that has run.
    void Begin(const RowSource& source);
    /// Takes the next rows; false when there is none behind them, or nobody wants them any more. Whether all of them
    /// came, the source's error tells.
    bool TakeBlock(RowSource& source);
    /// No more rows will come, because of a fault if there is one.
    void End(std::exception_ptr fault);

    // On the screen's.

    const QStringList& Columns() const { return m_columns; }
    qint64 Affected() const { return m_affected; }
    /// Adds the blocks that have come to those that are held already; false when no more will come. Throws what ended
    /// them, once all that came before it are held.
    bool Fetch(std::vector<Block>& blocks) const;
    /// Nobody wants the rest.
    void Abandon();

private:
    QStringList m_columns; ///< Stays what it is once `Begin` has returned.
    qint64 m_affected = 0; ///< The same.
    mutable std::mutex m_mutex;
    std::vector<Block> m_blocks;
    std::exception_ptr m_fault;
    bool m_hasEnded = false;
    bool m_isAbandoned = false;
};
