#include "admin/AccessLog.h"
#include "admin/command_record.h"
#include "admin/commands.h"
#include "admin/deleted_pictures.h"
#include "admin/upkeep_connection.h"
#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "contracts/setup_components.h"
#include "filing/capture_root.h"
#include "filing/capture_wastebasket.h"
#include "filing/originals.h"
#include "frame/components.h"
#include "frame/services.h"
#include "frame/terminal.h"
#include "records/picture_sums.h"
#include "records/Statement.h"
#include "session/VisitContext.h"

#include <QScopeGuard>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Full years that have to lie behind the end of one that goes.
constexpr int YearsOfRecord = 2;
constexpr int YearsOfDeleted = 10;

const QString NotYet = u"아무것도 지우지 않았습니다. 지우려면 --yes를 붙이십시오\n"_s;

/// False, with the reason told, for what is no year, and for one that is to be kept.
bool MayGo(const QString& year, int fullYears, TerminalOutput& out)
{
    bool isNumber = false;
    const int number = year.toInt(&isNumber);
    if (year.size() != 4 || !isNumber || number < 1900) {
        out << u"연도는 2023처럼 적습니다: %1\n"_s.arg(year);
        return false;
    }
    const int latest = UseService<Desktop>().Today().year() - fullYears - 1;
    if (number > latest)
        out << u"[거절] %1년은 끝난 뒤 꼬박 %2년이 지나지 않았습니다. 지금 지울 수 있는 해는 %3년까지입니다\n"_s
                   .arg(number)
                   .arg(fullYears)
                   .arg(latest);
    return number <= latest;
}

Statement OfDays(QStringView piece, const QString& from, const QString& until)
{
    return Statement(piece).Quoted(u" WHERE log_at >= '", from).Quoted(u" AND log_at < '", until);
}

/// The entries of a file go in one transaction, in which its triggers are away: nobody meets the table without them.
qint64 DeleteInFile(const QString& from, const QString& until)
{
    Execute(Statement(u" BEGIN IMMEDIATE "));
    auto undo = qScopeGuard([] {
        try {
            Execute(Statement(u" ROLLBACK "));
        } catch (const PlatformError&) {
            // It goes with the connection.
        }
    });
    Execute(Statement(u" DROP TRIGGER IF EXISTS ca_log_no_delete "));
    const qint64 count = Execute(OfDays(u" DELETE FROM ca_log ", from, until));
    CreateObject<clsTableKeeper>(u"prjTableKeeper.clsTableKeeper"_s)->tablecreate(Connection, u"ca_log"_s, {});
    Execute(Statement(u" COMMIT "));
    undo.dismiss();
    return count;
}

/// Day by day: no statement holds up those who write for long. A stop leaves whole days, and is gone on with.
qint64 DeleteOnServer(int year)
{
    qint64 count = 0;
    const QString form = u"yyyy-MM-dd"_s;
    for (QDate day(year, 1, 1); day.year() == year; day = day.addDays(1))
        count += Execute(OfDays(u" DELETE FROM ca_log ", day.toString(form), day.addDays(1).toString(form)));
    return count;
}

/// The original of a picture that has gone is nobody's; one that lies here and lives as well keeps it.
void RemoveOriginal(const DeletedPicture& picture)
{
    const QString identity = IdentityOfDeleted(picture.Path());
    const auto isIt = [&identity](const StoredSum& sum) { return sum.id == identity && sum.IsLive(); };
    if (!identity.isEmpty() && std::ranges::none_of(SumsOfVisit(picture.visit), isIt))
        DeleteFile(originals::PathFor(picture.visit, identity));
}

} // namespace

int RetireLog(const QString& year, const QStringList& options, TerminalOutput& out)
{
    if (!MayGo(year, YearsOfRecord, out))
        return Found;
    const OutsideChecks::Setup setup = UseService<OutsideChecks>().LookAtSetup();
    if (!setup.isGood)
        throw PlatformError(u"설정을 읽을 수 없습니다. check를 실행하십시오.!!"_s);
    Connection = OpenForUpkeep(setup, options, u"--db-user="_s);
    access_log::CheckReadable(setup.isServer);
    const QString from = year + u"-01-01"_s;
    const QString until = QString::number(year.toInt() + 1) + u"-01-01"_s;
    qint64 total = 0;
    const auto months = OpenRows(OfDays(u" SELECT SUBSTR( log_at, 1, 7 ), COUNT(*) FROM ca_log ", from, until)
                                     .Piece(u" GROUP BY SUBSTR( log_at, 1, 7 ) ORDER BY SUBSTR( log_at, 1, 7 ) "));
    for (; !months->Eof(); months->MoveNext()) {
        const qint64 count = months->Fields(1).toLongLong();
        out << u"%1  %2건\n"_s.arg(FieldText(*months, 0)).arg(count);
        total += count;
    }
    out << u"%1년의 접근 기록 %2건\n"_s.arg(year).arg(total);
    if (total == 0)
        return AllWell;
    if (!options.contains(u"--yes"_s)) {
        out << NotYet;
        return AllWell;
    }
    RecordCommand(u"retire-log %1: %2"_s.arg(year).arg(total));
    try {
        out << u"%1건을 지웠습니다\n"_s.arg(setup.isServer ? DeleteOnServer(year.toInt()) : DeleteInFile(from, until));
    } catch (const TableRefused& error) {
        throw PlatformError(u"이 계정은 접근 기록을 지울 수 없습니다.!! grants-admin.sql의 계정을 --db-user=로 "
                            "적으십시오.\n"_s +
                            error.Text());
    }
    return AllWell;
}

int RetireDeleted(const QString& year, const QStringList& options, TerminalOutput& out)
{
    if (!MayGo(year, YearsOfDeleted, out))
        return Found;
    const QString folder = YearFolder(ClientSetup.CaptureRoot, year);
    QList<DeletedPicture> pictures = DeletedPictures();
    pictures.removeIf([&folder](const DeletedPicture& picture) { return picture.visit.captureDir != folder; });
    QMap<QString, std::pair<qint64, qint64>> sections;
    for (const DeletedPicture& picture : pictures) {
        auto& [count, bytes] = sections[picture.visit.LogFolder()];
        ++count;
        bytes += picture.size;
    }
    for (auto section = sections.cbegin(); section != sections.cend(); ++section)
        out << u"%1  %2개, %3MB\n"_s.arg(NativePath(section.key()))
                   .arg(section->first)
                   .arg(static_cast<double>(section->second) / 1e6, 0, 'f', 1);
    out << u"%1년의 Log 폴더에 있는 그림 %2개\n"_s.arg(year).arg(pictures.size());
    if (pictures.isEmpty())
        return AllWell;
    if (!options.contains(u"--yes"_s)) {
        out << NotYet;
        return AllWell;
    }
    capture_root::Judge(ClientSetup.CaptureRoot);
    RecordCommand(u"retire-deleted %1: %2"_s.arg(year).arg(pictures.size()));
    qsizetype removed = 0;
    for (const DeletedPicture& picture : pictures) {
        try {
            capture_root::Check(folder);
            RemoveOriginal(picture);
            DeleteFile(picture.Path());
            ++removed;
        } catch (const capture_root::Refused&) {
            throw;
        } catch (const PlatformError& error) {
            out << u"[이상] 지우지 못하였습니다: %1\n"_s.arg(error.Text().simplified());
        }
    }
    out << u"%1개를 지웠습니다\n"_s.arg(removed);
    return removed == pictures.size() ? AllWell : Found;
}
