#include "admin/command_record.h"
#include "admin/commands.h"
#include "admin/patient_traces.h"
#include "admin/upkeep_connection.h"
#include "contracts/files.h"
#include "contracts/LocalDatabase.h"
#include "contracts/PlatformError.h"
#include "filing/capture_root.h"
#include "filing/journal_rows.h"
#include "frame/components.h"
#include "frame/services.h"
#include "frame/terminal.h"
#include "pacs/handed_files.h"
#include "pacs/queue_rows.h"
#include "records/Statement.h"
#include "session/VisitContext.h"

using namespace Qt::StringLiterals;

namespace {

QString KindText(PatientTraces::Waiting::Kind kind)
{
    switch (kind) {
    case PatientTraces::Waiting::Journal:
        return u"기다리는 그림 목록"_s;
    case PatientTraces::Waiting::Queue:
        return u"PACS로 보내는 목록"_s;
    case PatientTraces::Waiting::OldList:
        break;
    }
    return u"예전 판의 목록"_s;
}

void Show(const PatientTraces& traces, TerminalOutput& out)
{
    for (const PatientTraces::Files& files : traces.archive) {
        if (files.paths.isEmpty())
            continue;
        out << u"%1 %2개\n"_s.arg(files.what).arg(files.paths.size());
        for (const QString& path : files.paths)
            out << u"    "_s << NativePath(path) << u'\n';
    }
    for (const PatientTraces::Waiting& waiting : traces.waiting) {
        out << u"%1 %2건: %3"_s.arg(KindText(waiting.kind)).arg(waiting.lines).arg(NativePath(waiting.path))
            << (waiting.foreignOwner.isEmpty() ? u"\n"_s : u" (사용자 %1)\n"_s.arg(waiting.foreignOwner));
        for (const QString& path : waiting.files)
            out << u"    "_s << NativePath(path) << u'\n';
    }
    for (const PatientTraces::Rows& rows : traces.rows)
        out << u"테이블 %1 %2줄\n"_s.arg(rows.table).arg(rows.count);
    for (const QString& table : traces.closedTables)
        out << u"[참고] 테이블 %1: 없거나 읽을 수 없습니다\n"_s.arg(table);
    for (const QString& path : traces.unreadable)
        out << u"[참고] 읽을 수 없는 목록: %1\n"_s.arg(path);
    for (const QString& reason : traces.openVisits)
        out << u"[참고] 열려 있는 방문: %1\n"_s.arg(reason);
    if (!traces.IsAny())
        out << u"차트번호 %1의 것이 없습니다\n"_s.arg(traces.chart);
}

/// Does it step by step, and tells of each that fails.
class Removal
{
public:
    Removal(const PatientTraces& traces, TerminalOutput& out) : m_traces(traces), m_out(out) {}

    void Run()
    {
        // What waits would come into the archive again.
        for (const PatientTraces::Waiting& waiting : m_traces.waiting)
            Try([&] { RemoveWaiting(waiting); });
        bool isArchiveGone = true;
        for (const PatientTraces::Files& files : m_traces.archive) {
            for (const QString& path : files.paths)
                isArchiveGone = Try([&] { RemoveArchived(path); }) && isArchiveGone;
        }
        if (!isArchiveGone) {
            m_out << u"파일이 남아 있어 데이터베이스의 기록은 지우지 않았습니다\n"_s;
            return;
        }
        for (const PatientTraces::Rows& rows : m_traces.rows)
            Try([&] {
                Execute(Statement(u" DELETE FROM %1 WHERE %2 = '"_s.arg(rows.table, rows.column))
                            .Value(m_traces.chart)
                            .Piece(u"' "));
            });
    }

private:
    template <class Step>
    bool Try(const Step& step)
    {
        try {
            step();
            return true;
        } catch (const DatabaseAway&) {
            throw;
        } catch (const capture_root::Refused&) {
            throw;
        } catch (const PlatformError& error) {
            m_out << u"[이상] 지우지 못하였습니다: %1\n"_s.arg(error.Text().simplified());
            if (dynamic_cast<const TableRefused*>(&error) != nullptr)
                m_out
                    << u"    grants-admin.sql의 끝에 있는 권한을 주고, 그 계정을 --db-user=로 적어 다시 실행하십시오\n"_s;
            return false;
        }
    }

    static void RemoveArchived(const QString& path)
    {
        capture_root::Check(path.left(path.lastIndexOf(u'\\') + 1));
        DeleteFile(path);
    }

    void RemoveWaiting(const PatientTraces::Waiting& waiting) const
    {
        if (!waiting.foreignOwner.isEmpty())
            throw PlatformError(u"사용자 %1의 목록입니다. 그 사용자로 실행하거나 pending --take-over로 이어받으십시오 "
                                "(%2)"_s.arg(waiting.foreignOwner, NativePath(waiting.path)));
        if (waiting.kind == PatientTraces::Waiting::OldList)
            throw PlatformError(u"예전 판의 목록입니다. 스테이션을 한 번 실행한 다음 다시 하십시오 (%1)"_s.arg(
                NativePath(waiting.path)));
        if (waiting.kind == PatientTraces::Waiting::Queue) {
            RemoveHandedFiles(waiting.path);
            QStringList statements;
            const auto queue = UseService<LocalDatabases>().Open(waiting.path);
            for (const QString& table : queue_rows::PatientTables(*queue))
                statements
                    << Statement(u"DELETE FROM ").Piece(table).Quoted(u" WHERE chart = '", m_traces.chart).Text();
            queue->Run(statements);
            return;
        }
        const std::unique_ptr<FileLock> lock = Files().Lock(waiting.lock);
        if (lock == nullptr)
            throw PlatformError(u"다른 프로그램이 쓰고 있는 목록입니다 (%1)"_s.arg(NativePath(waiting.path)));
        const auto journal = UseService<LocalDatabases>().Open(waiting.path);
        // A file whose line has gone would be nobody's: it goes first.
        for (const QString& path : waiting.files)
            DeleteFile(path);
        QStringList statements = journal_rows::Tables();
        for (const QString& id : waiting.pictures)
            statements << journal_rows::Remove(id);
        for (const QString& id : waiting.movies)
            statements << journal_rows::RemoveMovie(id);
        for (const QString& id : waiting.deletions)
            statements << journal_rows::RemoveDeletion(id);
        journal->Run(statements);
    }

    /// Documents and movies that wait beside a queue: without their rows they would be nobody's.
    void RemoveHandedFiles(const QString& queue) const
    {
        const auto database = UseService<LocalDatabases>().Open(queue);
        if (!queue_rows::HasParts(*database))
            return;
        for (const QString& table : {u"line"_s, u"picture"_s}) {
            for (const QVariantList& row :
                 database->Rows(Statement(u"SELECT id FROM ")
                                    .Piece(table)
                                    .Quoted(u" WHERE part <> '' AND chart = '", m_traces.chart)
                                    .Text())) {
                if (IsPathPart(row.value(0).toString()))
                    handed_files::Remove(row.value(0).toString(), queue.left(queue.lastIndexOf(u'\\') + 1));
            }
        }
    }

    const PatientTraces& m_traces;
    TerminalOutput& m_out;
};

/// Typed twice by somebody who sits there.
bool IsMeant(const QString& chart, TerminalOutput& out)
{
    for (const QString& question :
         {u"지울 환자의 차트번호를 적으십시오(보이지 않습니다):"_s, u"한 번 더 적으십시오:"_s}) {
        const QString typed = Surroundings.askSecret ? Surroundings.askSecret(question).trimmed() : QString();
        if (typed.isEmpty() || typed.rightJustified(chart.size(), u'0') != chart) {
            out << (typed.isEmpty() ? u"[거절] 터미널에서 차트번호를 두 번 적어야 합니다. "_s
                                    : u"[거절] 차트번호가 다릅니다. "_s)
                << u"아무것도 지우지 않았습니다\n"_s;
            return false;
        }
    }
    return true;
}

} // namespace

int HandlePatient(const QString& chart, const QStringList& options, TerminalOutput& out)
{
    const OutsideChecks::Setup setup = UseService<OutsideChecks>().LookAtSetup();
    if (!setup.isGood)
        throw PlatformError(u"설정을 읽을 수 없습니다. check를 실행하십시오.!!"_s);
    Connection = OpenForUpkeep(setup, options, u"--db-user="_s);
    const PatientTraces traces = TracesOf(chart, setup.isServer);
    Show(traces, out);
    if (!options.contains(u"--remove"_s))
        return AllWell;
    if (!traces.openVisits.isEmpty()) {
        out << u"[거절] 이 환자의 방문이 열려 있습니다. 스테이션을 닫고 다시 하십시오\n"_s;
        return Found;
    }
    if (!traces.IsAny())
        return AllWell;
    // Their leases don't tell of which visit.
    if (traces.livingStations > 0)
        out << u"[참고] 스테이션 %1대가 실행 중입니다. 이 환자의 방문을 모두 닫았는지 확인하십시오\n"_s.arg(
            traces.livingStations);
    out.Flush();
    if (!IsMeant(chart, out))
        return Found;
    capture_root::Judge(ClientSetup.CaptureRoot);
    capture_root::Check(ClientSetup.CaptureRoot);
    RecordCommand(u"patient %1 --remove"_s.arg(chart));
    Removal(traces, out).Run();
    const PatientTraces left = TracesOf(chart, setup.isServer);
    if (!left.IsAny()) {
        out << (left.unreadable.isEmpty() ? u"모두 지웠습니다\n"_s
                                          : u"지웠습니다. 읽을 수 없는 목록은 보지 못하였습니다\n"_s);
        return left.unreadable.isEmpty() ? AllWell : Found;
    }
    out << u"남은 것:\n"_s;
    Show(left, out);
    return Found;
}
