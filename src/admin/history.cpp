#include "admin/AccessLog.h"
#include "admin/commands.h"
#include "admin/upkeep_connection.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/terminal.h"
#include "records/Statement.h"
#include "text/date_routines.h"
#include "text/text_routines.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

QString IsoDay(const QDate& day)
{
    return day.toString(u"yyyy-MM-dd"_s);
}

/// Nothing when the options can't be understood, which has been told.
std::optional<access_log::Filter> FilterOf(const QString& chart, const QStringList& options)
{
    access_log::Filter filter;
    filter.chart = chart;
    filter.user = OptionValue(options, u"--user="_s);
    const QString day = OptionValue(options, u"--day="_s);
    QString from = OptionValue(options, u"--from="_s);
    QString to = OptionValue(options, u"--to="_s);
    if (!day.isEmpty() && (!from.isEmpty() || !to.isEmpty())) {
        TellOnError(u"--day=는 --from=, --to=와 함께 쓸 수 없습니다"_s);
        return std::nullopt;
    }
    if (!day.isEmpty())
        from = to = day;
    for (const QString& each : {from, to}) {
        if (!each.isEmpty() && !DateFromText(each).isValid()) {
            TellOnError(u"날짜는 20261124처럼 적습니다: %1"_s.arg(each));
            return std::nullopt;
        }
    }
    if (!from.isEmpty())
        filter.from = IsoDay(DateFromText(from));
    if (!to.isEmpty())
        filter.until = IsoDay(DateFromText(to).addDays(1));
    const QStringList known = access_log::Kinds();
    for (const QString& kind : OptionValue(options, u"--kind="_s).split(u',', Qt::SkipEmptyParts)) {
        if (!known.contains(kind.trimmed())) {
            TellOnError(u"모르는 종류입니다: %1. 종류: %2"_s.arg(kind, known.join(u", "_s)));
            return std::nullopt;
        }
        filter.kinds << kind.trimmed();
    }
    return filter;
}

/// `2026-11-24 10:11:12`
QString TimeText(const QString& at)
{
    return at.left(19).replace(u'T', u' ');
}

QString VisitText(const access_log::Entry& entry)
{
    QStringList parts{entry.chart, entry.ymd, entry.etc};
    if (entry.number > 0)
        parts << NumberText(entry.number);
    parts.removeAll({});
    return parts.join(u' ');
}

void PutText(const access_log::Entry& entry, TerminalOutput& out)
{
    QStringList parts{TimeText(entry.at), entry.computer, entry.user, access_log::KindText(entry.kind)};
    if (entry.isRefused)
        parts << u"[거절됨]"_s;
    parts << VisitText(entry);
    if (!entry.detail.isEmpty())
        parts << u'(' + entry.detail + u')';
    parts.removeAll({});
    out << parts.join(u"  "_s) << u'\n';
}

/// A field by RFC 4180. A spreadsheet takes no text for a formula: one that begins like it gets an apostrophe in front.
QString Cell(QString text)
{
    text.replace(u"\r\n"_s, u"\n"_s);
    text.replace(u'\r', u'\n');
    if (!text.isEmpty() && u"=+-@\t\n"_s.contains(text.front()))
        text.prepend(u'\'');
    const bool needsQuotes = text.contains(u',') || text.contains(u'"') || text.contains(u'\n');
    return needsQuotes ? u'"' + text.replace(u'"', u"\"\""_s) + u'"' : text;
}

void PutRow(const QStringList& values, TerminalOutput& out)
{
    QStringList cells;
    for (const QString& value : values)
        cells << Cell(value);
    out.PutLines(cells.join(u','));
}

void PutCsv(const access_log::Entry& entry, TerminalOutput& out)
{
    PutRow({QString::number(entry.no), entry.at, entry.arrived, entry.computer, entry.user, entry.program, entry.run,
            QString::number(entry.seq), entry.kind, access_log::KindText(entry.kind),
            entry.isRefused ? u"거절됨"_s : QString(), entry.chart, entry.ymd, entry.etc,
            entry.number > 0 ? QString::number(entry.number) : QString(), entry.picture, entry.detail, entry.before,
            entry.id},
           out);
}

void PutJson(const access_log::Entry& entry, TerminalOutput& out)
{
    QJsonObject object{{u"no"_s, entry.no},
                       {u"id"_s, entry.id},
                       {u"at"_s, entry.at},
                       {u"arrived"_s, entry.arrived},
                       {u"computer"_s, entry.computer},
                       {u"user"_s, entry.user},
                       {u"program"_s, entry.program},
                       {u"run"_s, entry.run},
                       {u"seq"_s, entry.seq},
                       {u"kind"_s, entry.kind},
                       {u"kindText"_s, access_log::KindText(entry.kind)},
                       {u"refused"_s, entry.isRefused},
                       {u"chart"_s, entry.chart},
                       {u"ymd"_s, entry.ymd},
                       {u"section"_s, entry.etc},
                       {u"number"_s, entry.number},
                       {u"picture"_s, entry.picture},
                       {u"detail"_s, entry.detail}};
    if (!entry.before.isNull())
        object.insert(u"before"_s, entry.before);
    out.PutJson(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

/// Tells what the record lacks; true when it lacks acts of a run.
bool TellGaps(const access_log::Filter& filter, const std::function<void(const QString&)>& tell)
{
    const QList<access_log::RunGap> runs = access_log::RunGaps(filter);
    for (const access_log::RunGap& gap : runs)
        tell(u"[이상] 기록 %1건이 빠졌습니다: %2의 %3, %4부터 %5까지의 실행 (%6)"_s.arg(gap.missing)
                 .arg(gap.computer, gap.program, TimeText(gap.from), TimeText(gap.until), gap.run));
    qint64 count = 0;
    const QList<access_log::NumberGap> numbers = access_log::NumberGaps(filter, count);
    if (count == 0)
        return !runs.isEmpty();
    QStringList shown;
    for (const access_log::NumberGap& gap : numbers)
        shown << (gap.first == gap.last ? QString::number(gap.first) : u"%1-%2"_s.arg(gap.first).arg(gap.last));
    tell(u"[참고] 접수 번호 %1개가 비어 있습니다: %2%3. 되풀이된 기록, 서버의 설정, 정리된 해도 번호를 비웁니다"_s
             .arg(count)
             .arg(shown.join(u", "_s), shown.size() >= 20 ? u" …"_s : QString()));
    return !runs.isEmpty();
}

/// By whoever may read the record.
void OpenRecord(const QStringList& options)
{
    const OutsideChecks::Setup setup = UseService<OutsideChecks>().LookAtSetup();
    if (!setup.isGood)
        throw PlatformError(u"설정을 읽을 수 없습니다. check를 실행하십시오.!!"_s);
    Connection = OpenForUpkeep(setup, options, u"--db-user="_s);
    access_log::CheckReadable(setup.isServer);
}

} // namespace

int ShowHistory(const QString& chart, const QStringList& options, TerminalOutput& out)
{
    const std::optional<access_log::Filter> filter = FilterOf(chart, options);
    const bool isCsv = options.contains(u"--csv"_s);
    const bool isJson = options.contains(u"--json"_s);
    if (!filter || (isCsv && isJson)) {
        if (filter)
            TellOnError(u"--csv와 --json은 함께 쓸 수 없습니다"_s);
        return UsedWrongly;
    }
    OpenRecord(options);
    if (isCsv)
        PutRow({u"접수 번호"_s, u"시각"_s, u"접수 시각"_s, u"컴퓨터"_s, u"사용자"_s, u"프로그램"_s, u"실행"_s,
                u"차례"_s, u"종류"_s, u"한 일"_s, u"거절"_s, u"차트번호"_s, u"방문 날짜"_s, u"검사"_s, u"그림 번호"_s,
                u"그림"_s, u"내용"_s, u"앞의 글"_s, u"기록 번호"_s},
               out);
    qint64 count = 0;
    access_log::Read(*filter, [&](const access_log::Entry& entry) {
        ++count;
        if (isCsv)
            PutCsv(entry, out);
        else if (isJson)
            PutJson(entry, out);
        else
            PutText(entry, out);
    });
    const bool isText = !isCsv && !isJson;
    if (isText)
        out << (count == 0 ? u"기록이 없습니다\n"_s : u"%1건\n"_s.arg(count));
    out.Flush();
    const bool lacks = TellGaps(*filter, [&](const QString& line) {
        if (isText)
            out << line << u'\n';
        else
            TellOnError(line);
    });
    return lacks ? Found : AllWell;
}

int ShowEarlierTexts(const QString& chart, const QStringList& options, TerminalOutput& out)
{
    OpenRecord(options);
    access_log::Filter filter;
    filter.chart = chart;
    filter.kinds = {u"note-stored"_s, u"report-stored"_s, u"report-deleted"_s};
    filter.hasBefore = true;
    bool isAny = false;
    access_log::Read(filter, [&](const access_log::Entry& entry) {
        isAny = true;
        out << u"%1  %2  %3  %4  %5"_s.arg(TimeText(entry.at), entry.computer, entry.user,
                                           access_log::KindText(entry.kind), VisitText(entry))
            << (entry.detail.isEmpty() ? QString() : u"  ("_s + entry.detail + u')') << u", 앞의 글:\n"_s;
        for (const QString& line : entry.before.split(u'\n'))
            out << u"    "_s << line << u'\n';
    });
    if (!isAny)
        out << u"바뀌거나 지워진 참고사항과 소견서가 기록에 없습니다\n"_s;
    return AllWell;
}
