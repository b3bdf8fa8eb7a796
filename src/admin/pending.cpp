#include "admin/commands.h"

#include "admin/Report.h"
#include "admin/waiting_lists.h"
#include "contracts/desktop.h"
#include "contracts/files.h"
#include "filing/capture_folders.h"
#include "filing/capture_root.h"
#include "filing/Leftovers.h"
#include "filing/MovieFiling.h"
#include "filing/StillFiling.h"
#include "frame/components.h"
#include "frame/services.h"
#include "frame/terminal.h"
#include "pacs/PacsHandover.h"
#include "session/VisitContext.h"
#include "text/date_routines.h"
#include "text/text_routines.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// A database or a share that has brought nothing on for so long is left alone.
constexpr int PatienceMs = 15'000;

QJsonObject FactsOf(const PictureJournal::Found& journal, const QString& kind, const Visit& visit)
{
    QJsonObject facts = HolderFacts(journal.holder, journal.foreignOwner);
    facts[u"kind"_s] = kind;
    facts[u"chart"_s] = visit.chart;
    facts[u"date"_s] = visit.ymd;
    facts[u"section"_s] = visit.etc;
    return facts;
}

void ShowPicture(const PictureRecord& picture, const PictureJournal::Found& journal, Report& report)
{
    const Visit& visit = picture.visit;
    const bool isLocal = picture.number == 0;
    // It lies beside the journal, whoever's it is.
    const QString file = !isLocal ? visit.PicturePath(picture.number)
                                  : journal.path.left(journal.path.lastIndexOf(u'\\') + 1) +
                                        QString::fromUtf16(StillFiles::LocalPrefix) + picture.id + u".jpg"_s;
    const bool isMissing = isLocal && !FileExists(file);
    const bool isRefused = picture.state == PictureState::SetAside;
    const QString line =
        (isLocal ? u"보관 "_s : u"기록대기 "_s) +
        u"%1 %2 %3 %4 ("_s.arg(visit.chart, visit.ymd, visit.etc, isLocal ? u"-"_s : NumberText(picture.number)) +
        HolderText(journal.holder, journal.foreignOwner) + (isRefused ? u", 데이터베이스가 거부함"_s : QString()) +
        (picture.IsDeleted() ? u", 삭제 중"_s : QString()) + u") "_s + NativePath(file) +
        (isMissing ? u" 파일 없음"_s : QString());
    QJsonObject facts = FactsOf(journal, isLocal ? u"local"_s : u"row-waiting"_s, visit);
    if (!isLocal)
        facts[u"number"_s] = picture.number;
    facts[u"refused"_s] = isRefused;
    facts[u"deleting"_s] = picture.IsDeleted();
    facts[u"path"_s] = NativePath(file);
    if (isLocal)
        facts[u"fileThere"_s] = !isMissing;
    report.Item(line, facts);
}

/// A list or a file that stands for itself.
void ShowFile(const QString& word, const QString& kind, const QString& path, Report& report)
{
    report.Item(word + u' ' + NativePath(path), {{u"kind"_s, kind}, {u"path"_s, NativePath(path)}});
}

/// What waits in a program's folder; gives how many lines.
int ShowFolder(const QString& folder, Report& report)
{
    int lines = 0;
    QStringList listed;
    const QList<PictureJournal::Found> journals = PictureJournal::In(folder);
    for (const PictureJournal::Found& journal : journals) {
        if (!journal.isReadable) {
            QJsonObject facts = HolderFacts(journal.holder, journal.foreignOwner);
            facts[u"kind"_s] = u"unreadable-list"_s;
            facts[u"path"_s] = NativePath(journal.path);
            report.Item(u"읽을수없는목록 %1 ("_s.arg(NativePath(journal.path)) +
                            HolderText(journal.holder, journal.foreignOwner) + u')',
                        facts);
            ++lines;
        }
        for (const PictureRecord& picture : journal.pictures) {
            ShowPicture(picture, journal, report);
            listed << picture.id;
            ++lines;
        }
    }
    for (const PictureJournal::Found& journal : journals) {
        for (const RestoreJob& job : journal.restores) {
            QJsonObject facts = FactsOf(journal, u"restore"_s, job.visit);
            facts[u"number"_s] = job.wanted;
            facts[u"file"_s] = job.source;
            report.Item(
                u"되살리기 %1 %2 %3 %4 ("_s.arg(job.visit.chart, job.visit.ymd, job.visit.etc, NumberText(job.wanted)) +
                    HolderText(journal.holder, journal.foreignOwner) + u") "_s + job.source,
                facts);
            ++lines;
        }
    }
    for (const PictureJournal::Found& journal : journals) {
        for (const MarkedJob& job : journal.marked) {
            QJsonObject facts = FactsOf(journal, u"sum-waiting"_s, job.visit);
            facts[u"number"_s] = job.number;
            report.Item(
                u"합대기 %1 %2 %3 %4 ("_s.arg(job.visit.chart, job.visit.ymd, job.visit.etc, NumberText(job.number)) +
                    HolderText(journal.holder, journal.foreignOwner) + u')',
                facts);
            ++lines;
        }
    }
    for (const QString& name : MovieFiling::NamesIn(folder, {})) {
        const auto isOf = [&name](const MovieJob& job) { return name.contains(job.id); };
        const auto journal = std::ranges::find_if(
            journals, [&](const PictureJournal::Found& each) { return std::ranges::any_of(each.movies, isOf); });
        if (journal == journals.end()) {
            ShowFile(u"목록에없는동영상"_s, u"unlisted-movie"_s, folder + name, report);
        } else {
            const Visit visit = std::ranges::find_if(journal->movies, isOf)->visit;
            QJsonObject facts = HolderFacts(journal->holder, journal->foreignOwner);
            facts[u"kind"_s] = u"movie"_s;
            facts[u"chart"_s] = visit.chart;
            facts[u"date"_s] = visit.ymd;
            facts[u"path"_s] = NativePath(folder + name);
            report.Item(u"동영상 %1 %2 ("_s.arg(visit.chart, visit.ymd) +
                            HolderText(journal->holder, journal->foreignOwner) + u") "_s + NativePath(folder + name),
                        facts);
        }
        ++lines;
    }
    const QString prefix = QString::fromUtf16(StillFiles::LocalPrefix);
    for (const QString& name : Files().FilesStartingWith(folder, prefix)) {
        const QString picture = name.mid(prefix.size()).section(u'.', 0, 0);
        if (listed.contains(picture))
            continue;
        ShowFile(u"목록에없는그림"_s, u"unlisted-picture"_s, folder + name, report);
        ++lines;
    }
    return lines;
}

/// Tells of the journals that living stations hold; false when there is none. A station that has ended but for its
/// process holds none any more.
bool TellHeld(TerminalOutput& out)
{
    bool isAnyHeld = false;
    for (const PictureJournal::Found& journal : PictureJournal::In(LocalFolder())) {
        if (journal.holder != Holder::Living || !journal.foreignOwner.isEmpty() || journal.Size() == 0)
            continue;
        isAnyHeld = true;
        out << u"실행 중인 스테이션의 것이어서 손대지 않습니다.!! (%1건, %2)\n"_s.arg(journal.Size())
                   .arg(NativePath(journal.path));
    }
    return isAnyHeld;
}

/// Serves the filing until it has nothing left to do, or nothing has come on for too long.
void AwaitFiling(const StillFiling& filing, const MovieFiling& movies, const bool& isSettled)
{
    // The claims go last, on the share's thread.
    const auto left = [&] {
        return filing.Stills().Waiting() + filing.Journal().Waiting() + (filing.IsAtRest() ? 0 : 1) +
               (filing.Marked().IsAtRest() ? 0 : 1) + (isSettled ? 0 : 1) + (movies.IsAtRest() ? 0 : 1) +
               (filing.Stills().IsIdle() ? 0 : 1);
    };
    AwaitNothingLeft(left, PatienceMs);
}

} // namespace

int ListPending(Report& report)
{
    const int lines = ShowFolders([&report](const QString& folder) { return ShowFolder(folder, report); });
    report.Total(lines == 0 ? u"기다리는 그림이 없습니다."_s : QString(), {{u"waiting"_s, lines}});
    return lines == 0 ? AllWell : Found;
}

int WritePending(TerminalOutput& out)
{
    // The sections of this year are looked into, as by a start for a visit of today.
    const QString year = YearFolder(ClientSetup.CaptureRoot, TextFromDate(UseService<Desktop>().Today()));
    capture_root::Watch(ClientSetup.CaptureRoot);
    int written = 0;
    bool isSettled = false;
    {
        const auto pacs = PacsHandover::ForSetup(ClientSetup, SaupTable, Launched());
        StillFiling filing([](const Visit&) { return std::nullopt; });
        if (pacs)
            filing.Journal().setOutlet(pacs->Outlet());
        QObject::connect(&filing, &StillFiling::Tidings, &filing,
                         [&out](const QString& text) { out << text << u'\n'; });
        QObject::connect(&filing, &StillFiling::Safe, &filing, [&](const StillFiling::SafePicture& picture) {
            ++written;
            out << u"기록 "_s << picture.visit.chart << u' ' << picture.visit.ymd << u' ' << picture.visit.etc << u' '
                << NumberText(picture.number) << u'\n';
        });
        Leftovers leftovers(filing);
        QObject::connect(&leftovers, &Leftovers::AreSettled, &filing, [&](const Leftovers::Settled& settled) {
            isSettled = true;
            for (const QString& text : settled.tidings)
                out << text << u'\n';
        });
        MovieFiling movies(filing);
        leftovers.Settle(year, SectionsOfClient());
        AwaitFiling(filing, movies, isSettled);
        leftovers.End();
        movies.End();
        filing.End();
        if (const QString waiting = pacs ? pacs->End() : QString(); !waiting.isEmpty())
            out << waiting << u'\n';
    }
    Report report(out);
    const int left = ShowFolder(LocalFolder(), report);
    const bool isAnyHeld = TellHeld(out);
    out << u"%1건을 기록하였습니다.\n"_s.arg(written);
    return left > 0 || isAnyHeld ? Found : AllWell;
}
