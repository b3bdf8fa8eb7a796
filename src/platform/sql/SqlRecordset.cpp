#include "platform/sql/SqlRecordset.h"

#include "contracts/PlatformError.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

SqlRecordset::SqlRecordset(std::shared_ptr<SqlRows> rows) : m_source(std::move(rows)), m_isFetching(true)
{
    Fetch();
}

SqlRecordset::~SqlRecordset()
{
    Abandon();
}

SqlRecordset& SqlRecordset::operator=(SqlRecordset&& other) noexcept
{
    Abandon();
    m_source = std::move(other.m_source);
    m_blocks = std::move(other.m_blocks);
    m_rows = other.m_rows;
    m_isFetching = other.m_isFetching;
    m_isFiltered = other.m_isFiltered;
    m_passed = std::move(other.m_passed);
    m_position = other.m_position;
    return *this;
}

void SqlRecordset::Open(const QString& source, AdoConnection& activeConnection, ExecuteOption option)
{
    const std::unique_ptr<AdoRecordset> result = activeConnection.Execute(source, option);
    auto* rows = dynamic_cast<SqlRecordset*>(result.get());
    if (rows == nullptr)
        throw PlatformError(u"다른 종류의 데이터베이스 연결입니다.!!"_s);
    *this = std::move(*rows);
}

bool SqlRecordset::IsFetching()
{
    if (m_isFetching)
        Fetch();
    return m_isFetching;
}

void SqlRecordset::Fetch()
{
    m_isFetching = m_source->Fetch(m_blocks);
    if (m_blocks.empty())
        return;
    const qsizetype before = static_cast<qsizetype>(m_blocks.size()) - 1;
    m_rows = before * SqlRows::RowsInBlock + m_blocks.back()->size() / m_source->Columns().size();
}

void SqlRecordset::Abandon()
{
    if (m_source != nullptr)
        m_source->Abandon();
}

void SqlRecordset::Close()
{
    *this = SqlRecordset();
}

void SqlRecordset::MoveNext()
{
    if (!Eof())
        ++m_position;
}

QVariant SqlRecordset::Fields(const QString& name) const
{
    return Fields(static_cast<int>(Column(name)));
}

QVariant SqlRecordset::Fields(int place) const
{
    const QStringList& columns = Columns();
    if (place < 0 || place >= columns.size())
        throw PlatformError(u"자료에 %1번째 항목이 없습니다.!!"_s.arg(place + 1));
    if (Eof())
        throw PlatformError(u"읽을 자료가 더 없습니다.!! (%1)"_s.arg(columns.at(place)));
    return Value(m_isFiltered ? m_passed.at(m_position) : m_position, place);
}

const QVariant& SqlRecordset::Value(qsizetype row, qsizetype column) const
{
    const QList<QVariant>& block = *m_blocks[static_cast<size_t>(row / SqlRows::RowsInBlock)];
    return block.at(row % SqlRows::RowsInBlock * m_source->Columns().size() + column);
}

void SqlRecordset::setFilter(const QString& criterion)
{
    m_position = 0;
    m_passed.clear();
    m_isFiltered = !criterion.trimmed().isEmpty();
    if (!m_isFiltered)
        return;
    static const QRegularExpression equals(uR"(^\s*(.+?)\s*=\s*'(.*)'\s*$)"_s,
                                           QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = equals.match(criterion);
    if (!match.hasMatch())
        throw PlatformError(u"자료를 고르는 조건이 맞지 않습니다.!! (%1)"_s.arg(criterion.trimmed()));
    const qsizetype column = Column(match.captured(1));
    const QString text = match.captured(2).replace(u"''"_s, u"'"_s);
    for (qsizetype row = 0; row < m_rows; ++row) {
        const QVariant& value = Value(row, column);
        if (value.isValid() && value.toString().compare(text, Qt::CaseInsensitive) == 0)
            m_passed.append(row);
    }
}

const QStringList& SqlRecordset::Columns() const
{
    static const QStringList none;
    return m_source != nullptr ? m_source->Columns() : none;
}

qsizetype SqlRecordset::Column(const QString& name) const
{
    const QStringList& columns = Columns();
    for (qsizetype column = 0; column < columns.size(); ++column) {
        if (columns.at(column).compare(name, Qt::CaseInsensitive) == 0)
            return column;
    }
    throw PlatformError(u"자료에 %1 항목이 없습니다.!!"_s.arg(name));
}
