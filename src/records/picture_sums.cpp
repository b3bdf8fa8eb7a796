#include "records/picture_sums.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "records/Statement.h"
#include "records/tables.h"
#include "visit/Visit.h"

#include <QDateTime>
#include <QUuid>

#include <openssl/evp.h>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString NoTable = u"테이블 ca_sum을 쓸 수 없어 그림의 합을 기억하지 못합니다.!!"_s;

constexpr qint64 BytesAtOnce = 4'000'000;

/// As they stand in the table, in the order of `SumState`.
const QStringList States{u"live"_s, u"trusted"_s, u"deleted"_s};

QString Now()
{
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
}

/// The statement's condition: the rows of the visit.
Statement& OfVisit(Statement& statement, const Visit& visit)
{
    return statement.Quoted(u" WHERE sum_chart = '", visit.chart)
        .Quoted(u" AND sum_ymd = '", visit.ymd)
        .Quoted(u" AND sum_etc = '", visit.etc);
}

Statement& OfNumber(Statement& statement, const Visit& visit, int number)
{
    return OfVisit(statement, visit).Then(u" AND sum_no = ", number).Piece(u" ");
}

StoredSum SumIn(const AdoRecordset& row)
{
    const auto text = [&row](int place) { return row.Fields(place).toString(); };
    return {{text(0), text(1), text(2), row.Fields(3).toInt()},
            text(4),
            {text(5), row.Fields(6).toLongLong()},
            text(7),
            static_cast<SumState>(std::max<qsizetype>(0, States.indexOf(text(8))))};
}

constexpr char16_t Columns[] =
    u" SELECT sum_chart, sum_ymd, sum_etc, sum_no, sum_id, sum_hash, sum_bytes, sum_at, sum_state FROM ca_sum ";

QList<StoredSum> SumsIn(const Statement& statement)
{
    QList<StoredSum> sums;
    for (const auto rows = OpenRows(statement); !rows->Eof(); rows->MoveNext())
        sums.append(SumIn(*rows));
    return sums;
}

void Add(const Visit& visit, int number, const QString& id, const PictureSum& sum, SumState state)
{
    Execute(Statement(u" INSERT INTO ca_sum ( sum_chart, sum_ymd, sum_etc, sum_no, sum_id, sum_hash, sum_bytes, ")
                .Piece(u"sum_at, sum_state ) ")
                .Then(u" VALUES ( '", visit.chart)
                .Then(u"', '", visit.ymd)
                .Then(u"', '", visit.etc)
                .Then(u"', ", number)
                .Then(u", '", id)
                .Then(u"', '", sum.hash)
                .Piece(u"', ")
                .Piece(QString::number(sum.bytes))
                .Then(u", '", Now())
                .Then(u"', '", States.at(static_cast<int>(state)))
                .Piece(u"' ) "));
}

Statement ToState(SumState state)
{
    Statement statement(u" UPDATE ca_sum SET ");
    statement.Quoted(u" sum_state = '", States.at(static_cast<int>(state)));
    return statement;
}

/// Nothing without the table.
std::optional<QList<StoredSum>> SumsIfThere(const Statement& statement)
{
    try {
        return SumsIn(statement);
    } catch (const TableRefused& error) {
        NoteWithoutTable(NoTable, error);
        return std::nullopt;
    }
}

/// Whatever becomes of a sum, its picture goes its way.
template <class Work>
void WithTable(const Visit& visit, int number, const Work& work)
{
    try {
        work();
    } catch (const DatabaseAway&) {
        throw;
    } catch (const TableRefused& error) {
        NoteWithoutTable(NoTable, error);
    } catch (const PlatformError& error) {
        journal::NoteFault(u"그림의 합을 기억하지 못함: %1 %2 %3 %4번\n%5"_s.arg(visit.chart, visit.ymd, visit.etc)
                               .arg(number)
                               .arg(error.Text()));
    }
}

} // namespace

PictureDigest DigestOf(const QByteArray& content)
{
    PictureDigest digest{};
    unsigned int size = 0;
    if (EVP_Digest(content.constData(), static_cast<size_t>(content.size()),
                   reinterpret_cast<unsigned char*>(digest.data()), &size, EVP_sha256(), nullptr) != 1)
        throw PlatformError(u"그림의 합을 계산하지 못했습니다.!!"_s);
    return digest;
}

PictureDigest DigestIn(const QString& hash)
{
    PictureDigest digest{};
    const QByteArray bytes = QByteArray::fromHex(hash.toLatin1());
    if (bytes.size() == static_cast<qsizetype>(digest.size()))
        std::ranges::copy(bytes, digest.begin());
    return digest;
}

QString HashOf(const PictureDigest& digest)
{
    return QString::fromLatin1(QByteArray(digest.data(), static_cast<qsizetype>(digest.size())).toHex());
}

PictureSum SumOf(const QByteArray& content)
{
    return {HashOf(DigestOf(content)), content.size()};
}

PictureSum SumOfFile(const QString& path)
{
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    bool isWell = context != nullptr && EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) == 1;
    qint64 bytes = 0;
    for (qint64 last = BytesAtOnce; isWell && last == BytesAtOnce; bytes += last) {
        const QByteArray piece = Files().ReadArchivedPiece(path, bytes, BytesAtOnce);
        last = piece.size();
        isWell = EVP_DigestUpdate(context.get(), piece.constData(), static_cast<size_t>(last)) == 1;
    }
    PictureDigest digest{};
    unsigned int size = 0;
    if (!isWell || EVP_DigestFinal_ex(context.get(), reinterpret_cast<unsigned char*>(digest.data()), &size) != 1)
        throw PlatformError(u"파일의 합을 계산하지 못했습니다.!! (%1)"_s.arg(NativePath(path)));
    return {HashOf(digest), bytes};
}

QList<StoredSum> SumsOf(const Visit& visit, int number)
{
    Statement statement(Columns);
    return SumsIn(OfNumber(statement, visit, number).Piece(u" ORDER BY sum_at DESC "));
}

QString PictureIdOf(const Visit& visit, int number)
{
    QString id;
    WithTable(visit, number, [&] {
        const QList<StoredSum> sums = SumsOf(visit, number);
        const auto live = std::ranges::find_if(sums, &StoredSum::IsLive);
        id = live != sums.end() ? live->id : QString();
    });
    return id;
}

void KeepSum(const Visit& visit, int number, const QString& id, const PictureSum& sum, SumState state)
{
    if (!sum.IsKnown())
        return;
    WithTable(visit, number, [&] {
        try {
            Add(visit, number, id, sum, state);
        } catch (const Away&) {
            throw;
        } catch (const TableRefused&) {
            throw;
        } catch (const PlatformError&) {
            // Its rows were written before, and no answer came.
            const QList<StoredSum> sums = SumsOf(visit, number);
            const auto own = std::ranges::find(sums, id, &StoredSum::id);
            if (own == sums.end())
                throw;
            if (state == SumState::Deleted)
                SumIsDeleted(visit, number, id);
        }
    });
}

void ReplaceSum(const Visit& visit, int number, const PictureSum& sum, SumState state)
{
    WithTable(visit, number, [&] {
        const QList<StoredSum> sums = SumsOf(visit, number);
        auto own = std::ranges::find_if(sums, &StoredSum::IsLive);
        if (own == sums.end() && state == SumState::Deleted)
            own = sums.begin();
        if (own == sums.end()) {
            Add(visit, number, QUuid::createUuid().toString(QUuid::Id128), sum, state);
            return;
        }
        Statement statement = ToState(state);
        statement.Quoted(u", sum_hash = '", sum.hash)
            .Piece(u", sum_bytes = ")
            .Piece(QString::number(sum.bytes))
            .Quoted(u", sum_at = '", Now());
        Execute(OfNumber(statement, visit, number).Quoted(u" AND sum_id = '", own->id));
    });
}

void SumIsDeleted(const Visit& visit, int number, const QString& id)
{
    WithTable(visit, number, [&] {
        Statement statement = ToState(SumState::Deleted);
        OfNumber(statement, visit, number);
        if (!id.isEmpty())
            statement.Quoted(u" AND sum_id = '", id);
        Execute(statement);
    });
}

void SumIsRestored(const Visit& visit, int number, const QString& id, const PictureSum& sum)
{
    WithTable(visit, number, [&] {
        const auto bring = [&](const QString& column, const QString& value) {
            Statement statement(Columns);
            OfVisit(statement, visit).Quoted(u" AND "_s + column + u" = '"_s, value);
            const QList<StoredSum> sums = SumsIn(statement.Piece(u" ORDER BY sum_at DESC "));
            // A run that was cut off may have done it.
            const auto isBack = [&](const StoredSum& each) { return each.IsLive() && each.picture.number == number; };
            if (std::ranges::any_of(sums, isBack))
                return true;
            const auto deleted = std::ranges::find_if_not(sums, &StoredSum::IsLive);
            if (deleted == sums.end())
                return false;
            Statement update = ToState(SumState::Live);
            update.Then(u", sum_no = ", number).Piece(u" ");
            Execute(OfNumber(update, visit, deleted->picture.number).Quoted(u" AND sum_id = '", deleted->id));
            return true;
        };
        if (id.isEmpty() || !bring(u"sum_id"_s, id))
            bring(u"sum_hash"_s, sum.hash);
    });
}

std::optional<QList<StoredSum>> StoredSums(const QString& year, const std::optional<StoredSum>& after, int most)
{
    Statement statement(Columns);
    statement.Quoted(u" WHERE LEFT(sum_ymd, 4) = '", year)
        .Quoted(u" AND sum_etc <> '", QString::fromUtf16(MovieSection));
    if (after) {
        const PictureKey& key = after->picture;
        // The first condition alone is one that a server begins to read at.
        statement.Quoted(u" AND sum_chart >= '", key.chart)
            .Quoted(u" AND ( sum_chart > '", key.chart)
            .Quoted(u" OR sum_ymd > '", key.ymd)
            .Quoted(u" OR ( sum_ymd = '", key.ymd)
            .Quoted(u" AND ( sum_etc > '", key.etc)
            .Quoted(u" OR ( sum_etc = '", key.etc)
            .Then(u" AND ( sum_no > ", key.number)
            .Then(u" OR ( sum_no = ", key.number)
            .Quoted(u" AND sum_id > '", after->id)
            .Piece(u" ) ) ) ) ) ) ");
    }
    statement.Then(u" ORDER BY sum_chart, sum_ymd, sum_etc, sum_no, sum_id LIMIT ", most).Piece(u" ");
    return SumsIfThere(statement);
}

QList<StoredSum> MovieSums(const QString& year)
{
    Statement statement(Columns);
    statement.Quoted(u" WHERE LEFT(sum_ymd, 4) = '", year)
        .Quoted(u" AND sum_etc = '", QString::fromUtf16(MovieSection))
        .Quoted(u" AND sum_state <> '", States.last());
    return SumsIfThere(statement).value_or(QList<StoredSum>());
}

QList<StoredSum> SumsOfVisit(const Visit& visit)
{
    Statement statement(Columns);
    return SumsIfThere(OfVisit(statement, visit)).value_or(QList<StoredSum>());
}

bool TrustSum(const Visit& visit, int number, const PictureSum& sum)
{
    if (std::ranges::any_of(SumsOf(visit, number), &StoredSum::IsLive))
        return false;
    Add(visit, number, QUuid::createUuid().toString(QUuid::Id128), sum, SumState::Trusted);
    return true;
}
