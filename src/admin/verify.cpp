#include "admin/commands.h"

#include "admin/ArchiveYear.h"
#include "admin/deleted_pictures.h"
#include "admin/file_checks.h"
#include "admin/PictureSurvey.h"
#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/NumberClaim.h"
#include "frame/components.h"
#include "frame/services.h"
#include "frame/terminal.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <QRegularExpression>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

/// Rows that are held at a time.
constexpr int RowsAtOnce = 2000;
constexpr int HoursPerDay = 24;
constexpr int SecondsPerHour = 3600;

class Verification
{
public:
    Verification(bool decodes, TerminalOutput& out) : m_decodes(decodes), m_out(out) {}

    void CheckYear(const QString& year);
    int Conclude();

private:
    void MatchRows(ArchiveYear& year);
    void CheckPictures(const ArchiveYear& year);
    void TellRowsWithoutFile(const ArchiveYear& year);
    void TellFilesWithoutRow(const ArchiveYear& year);
    void CheckMovies(const ArchiveYear& year);
    void TellLeftovers(const ArchiveYear& year);
    void TellOther(const QString& folder, const QString& name);
    void TellLeftover(const QString& path, const QString& what, const QString& mark);

    void Tell(const QString& kind, const QString& path, const QString& more = {});
    void ShowProgress(const ArchiveYear& year, int done) const;

    const bool m_decodes;
    TerminalOutput& m_out;
    int m_pictures = 0;
    int m_faults = 0;
};

void Verification::Tell(const QString& kind, const QString& path, const QString& more)
{
    ++m_faults;
    m_out << kind << u' ' << NativePath(path) << (more.isEmpty() ? QString() : u" (%1)"_s.arg(more)) << u'\n';
}

void Verification::ShowProgress(const ArchiveYear& year, int done) const
{
    if (Surroundings.showsProgress)
        TerminalOutput(stderr).Overwrite(u"%1 %2 / %3 "_s.arg(year.Year()).arg(done).arg(year.PictureCount()));
}

void Verification::CheckYear(const QString& name)
{
    ArchiveYear year(name);
    m_pictures += static_cast<int>(year.PictureCount());
    if (m_decodes) {
        MatchRows(year);
        CheckPictures(year);
    } else {
        // The files are read while the database answers.
        const PictureSurvey survey(year);
        MatchRows(year);
        const auto isDone = [&] {
            ShowProgress(year, survey.ReadCount());
            return survey.IsDone();
        };
        UseService<Desktop>().ServeUntil({.done = isDone});
        for (const PictureSurvey::Finding& finding : survey.Findings() + DecodeAll(survey.Unknown(), [](int) {}))
            Tell(u"손상"_s, finding.path, finding.reason);
    }
    TellRowsWithoutFile(year);
    TellFilesWithoutRow(year);
    CheckMovies(year);
    TellLeftovers(year);
    // What was found missing has gone with its share.
    if (!year.Sections().empty() && !FolderExists(year.Folder()))
        throw PlatformError(u"캡쳐 폴더가 없어졌습니다.!! (%1)"_s.arg(NativePath(year.Folder())));
}

void Verification::MatchRows(ArchiveYear& year)
{
    std::optional<PictureKey> last;
    for (QList<PictureKey> rows; last ? rows.size() == RowsAtOnce : true;) {
        rows = StoredPictures(year.Year(), last, RowsAtOnce);
        for (const PictureKey& row : rows)
            year.Match(row);
        if (rows.isEmpty())
            return;
        last = rows.last();
    }
}

void Verification::CheckPictures(const ArchiveYear& year)
{
    int before = 0;
    for (const ArchiveYear::Section& section : year.Sections()) {
        QStringList paths;
        for (const QString& name : section.pictures)
            paths << section.path + name;
        for (const PictureSurvey::Finding& finding :
             DecodeAll(paths, [&](int done) { ShowProgress(year, before + done); }))
            Tell(u"손상"_s, finding.path, finding.reason);
        before += static_cast<int>(paths.size());
    }
}

void Verification::TellRowsWithoutFile(const ArchiveYear& year)
{
    for (const PictureKey& row : year.RowsWithoutFile()) {
        const QString text = u"%1 %2 %3 %4"_s.arg(row.chart, row.ymd, row.etc, NumberText(row.number));
        try {
            const Visit visit{row.chart, {}, row.ymd, row.etc, year.Folder(), VisitContext.ImageExt};
            // Filed or deleted since the folder was listed.
            if (!NumberClaim::IsPictureThere(visit, row.number) && HasPictureRow(visit, row.number))
                Tell(u"파일없음"_s, visit.PicturePath(row.number), text);
        } catch (const DatabaseAway&) {
            throw;
        } catch (const PlatformError&) {
            Tell(u"파일없음"_s, text, u"파일 이름이 될 수 없는 기록"_s);
        }
    }
}

void Verification::TellFilesWithoutRow(const ArchiveYear& year)
{
    for (const ArchiveYear::Section& section : year.Sections()) {
        for (qsizetype index = 0; index < section.pictures.size(); ++index) {
            if (section.hasRow[static_cast<size_t>(index)])
                continue;
            const QString path = section.path + section.pictures[index];
            const auto [visit, number] = ArchiveYear::PictureOf(section.pictures[index], section.name, year.Folder());
            // One whose rows are on their way is told of by its claim.
            if (NumberClaim::Stands(visit, number) || !PictureExists(path))
                continue;
            const bool isElsewhere = visit.ymd.left(4) != year.Year();
            if (isElsewhere || !HasPictureRow(visit, number))
                Tell(u"기록없음"_s, path, isElsewhere ? u"다른 해의 그림"_s : QString());
            else if (NumberClaim::PicturesThere(visit, number) > 1)
                Tell(u"기록없음"_s, path, u"같은 번호의 그림이 둘"_s);
        }
    }
}

void Verification::CheckMovies(const ArchiveYear& year)
{
    const QString folder = MovieFolder(year.Folder());
    for (const QString& name : Files().FilesStartingWith(folder, {})) {
        if (!name.endsWith(u".avi", Qt::CaseInsensitive) || name.startsWith(u'.')) {
            TellOther(folder, name);
            continue;
        }
        try {
            if (!HasMovieIndex(folder + name))
                Tell(u"색인없음"_s, folder + name);
        } catch (const PlatformError& error) {
            Tell(u"손상"_s, folder + name, error.Text());
        }
    }
}

void Verification::TellLeftovers(const ArchiveYear& year)
{
    for (const ArchiveYear::Section& section : year.Sections()) {
        for (const QString& name : section.claims) {
            const auto facts = NumberClaim::Read(section.path + name);
            TellLeftover(section.path + name, u"번호 표시"_s, facts ? facts->holder : QString());
        }
        for (const QString& name : section.others)
            TellOther(section.path, name);
        const QString log = LogFolder(year.Folder(), section.name);
        for (const QString& name : Files().FilesStartingWith(log, u"."_s))
            TellOther(log, name);
    }
}

void Verification::TellOther(const QString& folder, const QString& name)
{
    const QString mark = Files().MarkOfPartial(name);
    if (!mark.isEmpty()) {
        TellLeftover(folder + name, u"쓰던 파일"_s, mark);
        return;
    }
    // Of no program of the station: worth a line, and no fault.
    m_out << u"모르는파일 "_s << NativePath(folder + name) << u'\n';
}

void Verification::TellLeftover(const QString& path, const QString& what, const QString& mark)
{
    const QDateTime changed = Files().LastModified(path);
    if (!changed.isValid())
        return; // It has gone.
    const qint64 seconds = qMax<qint64>(0, changed.secsTo(QDateTime::currentDateTime()));
    const qint64 hours = seconds / SecondsPerHour;
    const QString age = hours < HoursPerDay ? u"%1시간"_s.arg(hours) : u"%1일"_s.arg(hours / HoursPerDay);
    const Holder holder = Files().HolderOf(mark);
    const bool isElsewhere = holder == Holder::Elsewhere;
    const QString owner = isElsewhere              ? u"다른 컴퓨터나 알 수 없는 스테이션"_s
                          : holder == Holder::Dead ? u"끝난 스테이션"_s
                                                   : u"실행 중인 스테이션"_s;
    const QString text = u"%1, %2, %3"_s.arg(what, age, owner);
    // Whether another machine's station is at its work can't be seen from here: as at the start of one, a day has to
    // pass.
    if (holder == Holder::Dead || (isElsewhere && seconds * 1000 > AbandonedMs))
        Tell(u"잔여"_s, path, text);
    else
        m_out << u"쓰는중 "_s << NativePath(path) << u" (%1)\n"_s.arg(text);
}

int Verification::Conclude()
{
    if (Surroundings.showsProgress)
        TerminalOutput(stderr) << u'\n';
    m_out << u"그림 %1장, 이상 %2건\n"_s.arg(m_pictures).arg(m_faults);
    return m_faults == 0 ? AllWell : Found;
}

} // namespace

int VerifyArchive(const QString& year, bool decodes, TerminalOutput& out)
{
    static const QRegularExpression form(uR"(^\d{4}$)"_s);
    if (!year.isEmpty() && !form.match(year).hasMatch()) {
        TellOnError(u"연도는 2026처럼 적습니다."_s);
        return UsedWrongly;
    }
    Verification verification(decodes, out);
    QStringList years{year};
    if (year.isEmpty()) {
        years = ArchiveYears() + StoredYears();
        years.removeDuplicates();
        years.sort();
    }
    for (const QString& each : years) {
        verification.CheckYear(each);
        out.Flush();
    }
    return verification.Conclude();
}
