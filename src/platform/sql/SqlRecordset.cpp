#include "platform/sql/SqlRecordset.h"

#include "contracts/PlatformError.h"

#include <QRegularExpression>
#include <QSqlQuery>
#include <QSqlRecord>

#include <numeric>

using namespace Qt::StringLiterals;

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

SqlRecordset::SqlRecordset(QSqlQuery& query)
{
    if (!query.isSelect())
        return;
    const QSqlRecord record = query.record();
    for (int column = 0; column < record.count(); ++column)
        m_columns.append(record.fieldName(column));
    while (query.next()) {
        for (int column = 0; column < record.count(); ++column)
            m_values.append(StationValue(query.value(column)));
        ++m_rows;
    }
    ShowAll();
}

void SqlRecordset::Open(const QString& source, AdoConnection& activeConnection)
{
    const std::unique_ptr<AdoRecordset> result = activeConnection.Execute(source);
    auto* rows = dynamic_cast<SqlRecordset*>(result.get());
    if (rows == nullptr)
        throw PlatformError(u"다른 종류의 데이터베이스 연결입니다.!!"_s);
    *this = std::move(*rows);
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
    if (place < 0 || place >= m_columns.size())
        throw PlatformError(u"자료에 %1번째 항목이 없습니다.!!"_s.arg(place + 1));
    if (Eof())
        throw PlatformError(u"읽을 자료가 더 없습니다.!! (%1)"_s.arg(m_columns.at(place)));
    return Value(m_shown.at(m_position), place);
}

const QVariant& SqlRecordset::Value(qsizetype row, qsizetype column) const
{
    return m_values.at(row * m_columns.size() + column);
}

void SqlRecordset::setFilter(const QString& criterion)
{
    ShowAll();
    if (criterion.trimmed().isEmpty())
        return;
    static const QRegularExpression equals(uR"(^\s*(.+?)\s*=\s*'(.*)'\s*$)"_s,
                                           QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = equals.match(criterion);
    if (!match.hasMatch())
        throw PlatformError(u"자료를 고르는 조건이 맞지 않습니다.!! (%1)"_s.arg(criterion.trimmed()));
    const qsizetype column = Column(match.captured(1));
    const QString text = match.captured(2).replace(u"''"_s, u"'"_s);
    m_shown.removeIf([&](qsizetype row) {
        const QVariant& value = Value(row, column);
        return !value.isValid() || value.toString().compare(text, Qt::CaseInsensitive) != 0;
    });
}

qsizetype SqlRecordset::Column(const QString& name) const
{
    for (qsizetype column = 0; column < m_columns.size(); ++column) {
        if (m_columns.at(column).compare(name, Qt::CaseInsensitive) == 0)
            return column;
    }
    throw PlatformError(u"자료에 %1 항목이 없습니다.!!"_s.arg(name));
}

void SqlRecordset::ShowAll()
{
    m_shown.resize(m_rows);
    std::iota(m_shown.begin(), m_shown.end(), 0);
    m_position = 0;
}
