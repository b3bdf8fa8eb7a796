#pragma once

#include "contracts/ado.h"
#include "platform/sql/SqlRows.h"

/// The rows of a statement, in memory.
class SqlRecordset : public AdoRecordset
{
public:
    SqlRecordset() = default;
    /// Of a statement that has run; further rows may still come.
    explicit SqlRecordset(std::shared_ptr<SqlRows> rows);
    ~SqlRecordset() override;
    SqlRecordset(const SqlRecordset&) = delete;
    SqlRecordset& operator=(SqlRecordset&&) noexcept;

    void setCursorLocation(CursorLocation /*location*/) override {}
    void setCursorType(CursorType /*type*/) override {}
    void setLockType(LockType /*type*/) override {}

    void Open(const QString& source, AdoConnection& activeConnection, ExecuteOption option) override;
    bool IsFetching() override;
    void Close() override;
    bool Eof() const override { return m_position >= Shown(); }
    bool Bof() const override { return Shown() == 0; }
    void MoveNext() override;
    QVariant Fields(const QString& name) const override;
    QVariant Fields(int place) const override;
    qint64 RecordsAffected() const override { return m_source != nullptr ? m_source->Affected() : 0; }
    void setFilter(const QString& criterion) override;

private:
    const QStringList& Columns() const;
    qsizetype Column(const QString& name) const;
    const QVariant& Value(qsizetype row, qsizetype column) const;
    qsizetype Shown() const { return m_isFiltered ? m_passed.size() : m_rows; }
    void Fetch();
    void Abandon();

    std::shared_ptr<SqlRows> m_source;
    std::vector<SqlRows::Block> m_blocks;
    qsizetype m_rows = 0; ///< In the blocks.
    bool m_isFetching = false;
    bool m_isFiltered = false;
    QList<qsizetype> m_passed; ///< Rows that pass the filter.
    qsizetype m_position = 0;  ///< Within the rows that are shown.
};
