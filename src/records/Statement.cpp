#include "records/Statement.h"

#include "contracts/PlatformError.h"
#include "frame/WorkThread.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

#include <QPointer>

using namespace Qt::StringLiterals;

ConnectionPointer Connection;

namespace {
/// Whose thread this is: work that is under way there keeps to its connection, whatever becomes of the global one.
thread_local AdoConnection* ownConnection = nullptr;

AdoConnection& OpenConnection()
{
    if (ownConnection != nullptr)
        return *ownConnection;
    if (Connection == nullptr)
        throw DatabaseAway(u"데이터베이스에 연결되어 있지 않습니다.!!"_s);
    return *Connection;
}
} // namespace

Statement& Statement::Piece(QStringView piece)
{
    m_text.append(piece);
    return *this;
}

Statement& Statement::Value(const QString& text)
{
    QString literal = text;
    m_text.append(literal.replace(u"'"_s, u"''"_s));
    return *this;
}

Statement& Statement::Value(int number)
{
    m_text.append(QString::number(number));
    return *this;
}

Statement& Statement::Quoted(QStringView piece, const QString& text)
{
    return Piece(piece).Value(text).Piece(u"' ");
}

Statement& Statement::Same(const QString& column, const QVariant& value)
{
    if (!value.isValid())
        return Piece(column).Piece(u" IS NULL ");
    if (value.typeId() == QMetaType::LongLong)
        return Piece(column).Then(u" = ", value.toInt()).Piece(u" ");
    return Piece(u"CAST(CONVERT(")
        .Piece(column)
        .Piece(u" USING utf8mb4) AS BINARY) = CAST('")
        .Value(value.toString())
        .Piece(u"' AS BINARY) ");
}

Statement& Statement::OfVisit(const QString& prefix, const Visit& visit)
{
    return Quoted(u" WHERE "_s + prefix + u"_chart = '"_s, visit.chart)
        .Quoted(u" AND "_s + prefix + u"_ymd = '"_s, visit.ymd)
        .Quoted(u" AND "_s + prefix + u"_etc = '"_s, visit.etc)
        .Piece(u" AND "_s + prefix + u"_gubun = 'A' "_s);
}

std::unique_ptr<AdoRecordset> OpenRows(const Statement& statement, CursorType cursor, ExecuteOption option)
{
    AdoConnection& connection = OpenConnection();
    std::unique_ptr<AdoRecordset> rows = connection.NewRecordset();
    rows->setCursorLocation(adUseClient);
    rows->setCursorType(cursor);
    rows->setLockType(adLockReadOnly);
    rows->Open(statement.Text(), connection, option);
    return rows;
}

qint64 Execute(const Statement& statement)
{
    return OpenConnection().Execute(statement.Text())->RecordsAffected();
}

void QueueStatements(QObject* context, AdoConnection::Work work, AdoConnection::Done done)
{
    if (Connection == nullptr) {
        PostToScreen([context = QPointer(context), done = std::move(done)] {
            if (context)
                done(std::make_exception_ptr(DatabaseAway(u"데이터베이스에 연결되어 있지 않습니다.!!"_s)));
        });
        return;
    }
    AdoConnection& connection = OpenConnection();
    const auto onThread = [&connection, work = std::move(work)] {
        ownConnection = &connection;
        work();
    };
    connection.Queue(context, onThread, std::move(done));
}

bool HasRow(const AdoRecordset& rows)
{
    return !(rows.Eof() && rows.Bof());
}

QString FieldText(const AdoRecordset& rows, const QString& column)
{
    return Trim(rows.Fields(column).toString());
}

QString FieldText(const AdoRecordset& rows, int place)
{
    return Trim(rows.Fields(place).toString());
}

int FieldNumber(const AdoRecordset& rows, const QString& column)
{
    return rows.Fields(column).toInt();
}
