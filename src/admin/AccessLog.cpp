#include "admin/AccessLog.h"

#include "admin/table_columns.h"
#include "contracts/PlatformError.h"
#include "records/Statement.h"

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int PageRows = 1000;
constexpr int GapsShown = 20;

/// Word in the table, and what is told of it.
const std::array<std::pair<QString, QString>, 25>& Words()
{
    static const std::array<std::pair<QString, QString>, 25> words{{
        {u"visit-opened"_s, u"방문 열람"_s},
        {u"history-opened"_s, u"지난 방문 열람"_s},
        {u"filed"_s, u"그림 저장"_s},
        {u"imported"_s, u"그림 가져오기"_s},
        {u"marked-up"_s, u"그림에 표시"_s},
        {u"looked-at"_s, u"열람"_s},
        {u"deleted"_s, u"그림 삭제"_s},
        {u"restored"_s, u"그림 되살림"_s},
        {u"swept"_s, u"기록 없는 그림 정리"_s},
        {u"printed"_s, u"그림 출력"_s},
        {u"dragged-out"_s, u"그림 내보내기"_s},
        {u"written-to-disc"_s, u"CD에 쓰기"_s},
        {u"sent"_s, u"PACS로 보냄"_s},
        {u"note-stored"_s, u"참고사항 저장"_s},
        {u"report-stored"_s, u"소견서 저장"_s},
        {u"report-deleted"_s, u"소견서 삭제"_s},
        {u"report-printed"_s, u"소견서 출력"_s},
        {u"report-sent"_s, u"소견서를 PACS로 보냄"_s},
        {u"movie-sent"_s, u"동영상을 PACS로 보냄"_s},
        {u"rejected"_s, u"PACS에 삭제를 알림"_s},
        {u"searched"_s, u"소견서 검색"_s},
        {u"administered"_s, u"관리 명령"_s},
        {u"order-taken"_s, u"처방을 받음"_s},
        {u"step-sent"_s, u"검사 진행을 알림"_s},
        {u"committed"_s, u"PACS 보관 확인"_s},
    }};
    return words;
}

/// On the filter's days.
void AddDays(Statement& condition, const access_log::Filter& filter)
{
    if (!filter.from.isEmpty())
        condition.Quoted(u" AND log_at >= '", filter.from);
    if (!filter.until.isEmpty())
        condition.Quoted(u" AND log_at < '", filter.until);
}

/// The column begins, or ends, with the text.
void AddPart(Statement& condition, QStringView piece, const QString& text, bool isEnd)
{
    const int size = static_cast<int>(text.toUcs4().size());
    condition.Piece(piece);
    if (isEnd)
        condition.Then(u"SUBSTR( log_user, -", size).Piece(u" ) = '");
    else
        condition.Then(u"SUBSTR( log_user, 1, ", size).Piece(u" ) = '");
    condition.Value(text).Piece(u"' ");
}

/// Each part of it begins with AND.
Statement ConditionOf(const access_log::Filter& filter)
{
    Statement condition;
    AddDays(condition, filter);
    if (!filter.chart.isEmpty())
        condition.Quoted(u" AND log_chart = '", filter.chart);
    if (!filter.user.isEmpty()) {
        condition.Quoted(u" AND ( log_user = '", filter.user);
        AddPart(condition, u" OR ", filter.user + u" ("_s, false);
        AddPart(condition, u" OR ", u" ("_s + filter.user + u')', true);
        condition.Piece(u" ) ");
    }
    if (!filter.kinds.isEmpty()) {
        condition.Piece(u" AND log_kind IN ( ''");
        for (const QString& kind : filter.kinds)
            condition.Then(u", '", kind).Piece(u"'");
        condition.Piece(u" ) ");
    }
    if (filter.hasBefore)
        condition.Piece(u" AND log_before IS NOT NULL AND log_before <> '' ");
    return condition;
}

access_log::Entry EntryOf(const AdoRecordset& row)
{
    const auto text = [&row](int place) { return row.Fields(place).toString(); };
    return {row.Fields(0).toLongLong(),
            text(1),
            text(2),
            text(3),
            text(4),
            text(5),
            text(6),
            text(7),
            row.Fields(8).toInt(),
            text(9),
            row.Fields(10).toInt() != 0,
            text(11),
            text(12),
            text(13),
            row.Fields(14).toInt(),
            text(15),
            text(16),
            text(17)};
}

qint64 NumberIn(const Statement& statement)
{
    return OpenRows(statement)->Fields(0).toLongLong();
}

} // namespace

void access_log::Read(const Filter& filter, const std::function<void(const Entry&)>& take)
{
    const Statement condition = ConditionOf(filter);
    QString last = u"0"_s;
    for (bool isMore = true; isMore;) {
        const auto rows = OpenRows(Statement(u" SELECT log_no, log_id, log_at, CAST( log_arrived AS CHAR ), "
                                             "log_computer, log_user, log_program, log_run, log_seq, log_kind, "
                                             "log_refused, log_chart, log_ymd, log_etc, log_number, log_picture, "
                                             "log_detail, log_before FROM ca_log WHERE log_no > ")
                                       .Piece(last)
                                       .Piece(condition.Text())
                                       .Then(u" ORDER BY log_no LIMIT ", PageRows));
        int count = 0;
        for (; !rows->Eof(); rows->MoveNext(), ++count) {
            const Entry entry = EntryOf(*rows);
            last = QString::number(entry.no);
            take(entry);
        }
        isMore = count == PageRows;
    }
}

QStringList access_log::Kinds()
{
    QStringList kinds;
    for (const auto& [word, text] : Words())
        kinds << word;
    return kinds;
}

QString access_log::KindText(const QString& kind)
{
    for (const auto& [word, text] : Words()) {
        if (word == kind)
            return text;
    }
    return kind;
}

QList<access_log::RunGap> access_log::RunGaps(const Filter& filter)
{
    const auto oldest = OpenRows(Statement(u" SELECT MIN( log_no ), MIN( log_at ) FROM ca_log "));
    const bool isCut = oldest->Fields(0).toLongLong() > 1;
    const QString oldestYear = FieldText(*oldest, 1).left(4);
    Statement ask(u" SELECT log_run, MIN( log_computer ), MIN( log_program ), MIN( log_at ), MAX( log_at ), "
                  "COUNT( DISTINCT log_seq ), MIN( log_seq ), MAX( log_seq ) FROM ca_log WHERE log_run <> '' ");
    if (!filter.from.isEmpty() || !filter.until.isEmpty()) {
        ask.Piece(u" AND log_run IN ( SELECT log_run FROM ca_log WHERE log_run <> '' ");
        AddDays(ask, filter);
        ask.Piece(u" ) ");
    }
    ask.Piece(u" GROUP BY log_run HAVING MIN( log_seq ) > 1 OR "
              "COUNT( DISTINCT log_seq ) < MAX( log_seq ) - MIN( log_seq ) + 1 ORDER BY MIN( log_no ) ");
    QList<RunGap> gaps;
    for (const auto rows = OpenRows(ask); !rows->Eof(); rows->MoveNext()) {
        RunGap gap{FieldText(*rows, 0), FieldText(*rows, 1), FieldText(*rows, 2),
                   FieldText(*rows, 3), FieldText(*rows, 4), 0};
        const qint64 first = rows->Fields(6).toLongLong();
        gap.missing = rows->Fields(7).toLongLong() - first + 1 - rows->Fields(5).toLongLong();
        if (first > 1 && !(isCut && gap.from.left(4) == oldestYear))
            gap.missing += first - 1;
        if (gap.missing > 0)
            gaps << gap;
    }
    return gaps;
}

QList<access_log::NumberGap> access_log::NumberGaps(const Filter& filter, qint64& count)
{
    Statement days;
    AddDays(days, filter);
    const auto bounds =
        OpenRows(Statement(u" SELECT COALESCE( MIN( log_no ), 0 ), COALESCE( MAX( log_no ), 0 ) FROM ca_log WHERE "
                           "log_no > 0 ")
                     .Piece(days.Text()));
    const QString from = u" FROM ( SELECT log_no, LAG( log_no ) OVER ( ORDER BY log_no ) AS before_no FROM ca_log "
                         "WHERE log_no BETWEEN %1 AND %2 ) AS numbered WHERE log_no - before_no > 1 "_s
                             .arg(bounds->Fields(0).toLongLong())
                             .arg(bounds->Fields(1).toLongLong());
    count = NumberIn(Statement(u" SELECT COALESCE( SUM( log_no - before_no - 1 ), 0 ) ").Piece(from));
    QList<NumberGap> gaps;
    if (count == 0)
        return gaps;
    const auto rows = OpenRows(
        Statement(u" SELECT before_no + 1, log_no - 1 ").Piece(from).Then(u" ORDER BY log_no LIMIT ", GapsShown));
    for (; !rows->Eof(); rows->MoveNext())
        gaps.append({rows->Fields(0).toLongLong(), rows->Fields(1).toLongLong()});
    return gaps;
}

void access_log::CheckReadable(bool isServer)
{
    if (ColumnsOf(u"ca_log"_s, isServer).isEmpty())
        throw PlatformError(
            u"테이블 ca_log가 없거나 읽을 수 없습니다.!! capture-station-admin upgrade-tables로 만들고, "
            "서버에서는 grants-admin.sql의 계정을 --db-user=로 적으십시오."_s);
    try {
        OpenRows(Statement(u" SELECT log_no, log_at FROM ca_log WHERE 1 = 0 "));
    } catch (const TableRefused& error) {
        throw PlatformError(u"이 계정은 접근 기록을 읽을 수 없습니다.!! "
                            "/usr/share/capture-station/sql/mariadb/grants-admin.sql의 계정을 --db-user=로 "
                            "적으십시오.\n"_s +
                            error.Text());
    }
}
