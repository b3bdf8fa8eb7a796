#include "admin/commands.h"

#include "admin/ArchiveFindings.h"
#include "admin/ArchiveYear.h"
#include "admin/deleted_pictures.h"
#include "admin/MovieCheck.h"
#include "admin/PictureSurvey.h"
#include "admin/Report.h"
#include "admin/SumCheck.h"
#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/NumberClaim.h"
#include "frame/components.h"
#include "frame/file_calls.h"
#include "frame/services.h"
#include "frame/terminal.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <QRegularExpression>

#include <cstdio>
#include <map>

using namespace Qt::StringLiterals;
using namespace findings;

namespace {

/// Rows that are held at a time.
constexpr int RowsAtOnce = 2000;
/// Files that one statement asks for.
constexpr qsizetype FilesAtOnce = 200;
constexpr int HoursPerDay = 24;
constexpr int SecondsPerHour = 3600;

QJsonObject FactsOf(const PictureKey& picture)
{
    QJsonObject facts{{u"chart"_s, picture.chart}, {u"date"_s, picture.ymd}, {u"section"_s, picture.etc}};
    if (picture.number > 0)
        facts[u"number"_s] = picture.number;
    return facts;
}

PictureKey KeyOf(const std::pair<Visit, int>& picture)
{
    return {picture.first.chart, picture.first.ymd, picture.first.etc, picture.second};
}

Visit VisitOf(const QString& yearFolder, const PictureKey& row)
{
    return {row.chart, {}, row.ymd, row.etc, yearFolder, VisitContext.ImageExt};
}

/// Nothing for a row whose texts can't be a file's name.
std::optional<QString> PathOf(const QString& yearFolder, const PictureKey& row)
{
    try {
        return VisitOf(yearFolder, row).PicturePath(row.number);
    } catch (const PlatformError&) {
        return std::nullopt;
    }
}

/// Those of the rows whose picture isn't there.
QList<PictureKey> WithoutPicture(const QString& yearFolder, QList<PictureKey> rows)
{
    std::map<QString, bool> hasFolder;
    rows.removeIf([&](const PictureKey& row) {
        if (!PathOf(yearFolder, row))
            return false;
        const Visit visit = VisitOf(yearFolder, row);
        const auto [folder, isNew] = hasFolder.try_emplace(row.etc);
        if (isNew)
            folder->second = FolderExists(visit.SectionFolder());
        return folder->second && NumberClaim::IsPictureThere(visit, row.number);
    });
    return rows;
}

class Verification
{
public:
    struct Wanted
    {
        bool decodes = false;
        bool learns = false; ///< Sums of pictures that have none.
        bool tellsAll = false;
    };

    Verification(const Wanted& wanted, Report& report)
        : m_decodes(wanted.decodes), m_learns(wanted.learns), m_report(report), m_findings(report, wanted.tellsAll)
    {
    }

    void CheckYear(const QString& year);
    void TellLinkedYear(const QString& year)
    {
        m_findings.TellPath(FolderLink, YearFolder(ClientSetup.CaptureRoot, year));
    }
    void TellNothing() { m_findings.TellPath(Nothing, ClientSetup.CaptureRoot, u"파일도 기록도 없음"_s); }
    int Conclude();

private:
    void CheckYear(ArchiveYear& year);
    void MatchRows(ArchiveYear& year, const std::function<void()>& between);
    void CheckPictures(const ArchiveYear& year, SumCheck& sums);
    void TellNews(PictureSurvey& survey, SumCheck& sums);
    void TellRowsWithoutFile(const ArchiveYear& year, QList<PictureKey> rows, const std::optional<PictureKey>& after);
    void TellVisitsWithoutRow(const ArchiveYear& year, const QList<PictureKey>& rows);
    void TellFilesWithoutRow(const ArchiveYear& year);
    void CheckMovies(const ArchiveYear& year);
    void TellFolders(const ArchiveYear& year);
    void TellFolder(const ArchiveYear::Folder& folder);
    void TellLeftovers(const ArchiveYear& year);
    void TellOther(const QString& folder, const QString& name);
    void TellLeftover(const QString& path, const QString& what, const QString& mark);

    void ShowProgress(const ArchiveYear& year, qsizetype done) const;

    const bool m_decodes;
    const bool m_learns;
    Report& m_report;
    ArchiveFindings m_findings;
    int m_rows = 0;                     ///< Of the present year.
    std::map<QString, int> m_unmatched; ///< Of the present year, by section: rows of a folder that can't be read.
    PictureKey m_lastVisit;
    int m_pictures = 0;
    int m_withoutSum = 0;
    int m_learned = 0;
};

void Verification::ShowProgress(const ArchiveYear& year, qsizetype done) const
{
    if (Surroundings.showsProgress)
        TerminalOutput(stderr).Overwrite(u"%1 %2 / %3 "_s.arg(year.Year()).arg(done).arg(year.PictureCount()));
}

void Verification::CheckYear(const QString& name)
{
    m_rows = 0;
    m_unmatched.clear();
    std::optional<ArchiveYear> year;
    try {
        year.emplace(name);
    } catch (const PlatformError& error) {
        m_findings.TellPath(Unreadable, YearFolder(ClientSetup.CaptureRoot, name), error.Text());
    }
    if (year)
        CheckYear(*year);
    m_findings.EndYear(name);
    // What was found missing has gone with its share.
    for (const QString& folder : {ClientSetup.CaptureRoot, year && year->IsThere() ? year->Path() : QString()}) {
        if (!folder.isEmpty() && !FolderExists(folder))
            throw PlatformError(u"캡쳐 폴더가 없어졌습니다.!! (%1)"_s.arg(NativePath(folder)));
    }
}

void Verification::CheckYear(ArchiveYear& year)
{
    m_pictures += static_cast<int>(year.PictureCount());
    SumCheck sums(year, m_findings);
    // The files are read while the database answers.
    PictureSurvey survey(year);
    MatchRows(year, [&] { TellNews(survey, sums); });
    sums.Read([&] { TellNews(survey, sums); });
    const auto isDone = [&] {
        ShowProgress(year, survey.ReadCount());
        return survey.IsDone() || survey.HasNews();
    };
    while (!survey.IsDone() && UseService<Desktop>().ServeUntil({.done = isDone}))
        TellNews(survey, sums);
    TellNews(survey, sums);
    if (m_decodes)
        CheckPictures(year, sums);
    if (survey.IsDone()) {
        sums.Compare(survey);
        m_learned += m_learns ? sums.Learn(survey) : 0;
    }
    m_withoutSum += sums.Without();
    if (m_rows == 0 && year.IsEmpty())
        m_findings.TellPath(Nothing, year.Path(), u"파일도 기록도 없음"_s);
    TellFolders(year);
    TellFilesWithoutRow(year);
    CheckMovies(year);
    TellLeftovers(year);
}

void Verification::TellNews(PictureSurvey& survey, SumCheck& sums)
{
    const PictureSurvey::News news = survey.TakeNews();
    // Who decodes them all tells more.
    if (m_decodes)
        return;
    for (const PictureSurvey::Finding& finding : news.findings + DecodeAll(news.unknown, [](int) {})) {
        sums.IsDamaged(finding.path);
        m_findings.TellPath(Damaged, finding.path, finding.reason);
    }
}

void Verification::MatchRows(ArchiveYear& year, const std::function<void()>& between)
{
    std::optional<PictureKey> last;
    for (QList<PictureKey> rows; last ? rows.size() == RowsAtOnce : true;) {
        rows = StoredPictures(year.Year(), last, RowsAtOnce);
        if (rows.isEmpty())
            return;
        m_rows += static_cast<int>(rows.size());
        QList<PictureKey> withoutFile;
        for (const PictureKey& row : rows) {
            const ArchiveYear::Found found = year.Match(row);
            if (found == ArchiveYear::Found::Unread)
                ++m_unmatched[row.etc];
            else if (found != ArchiveYear::Found::File)
                withoutFile.append(row);
        }
        TellRowsWithoutFile(year, withoutFile, last);
        TellVisitsWithoutRow(year, rows);
        last = rows.last();
        between();
    }
}

void Verification::CheckPictures(const ArchiveYear& year, SumCheck& sums)
{
    qsizetype done = 0;
    for (const ArchiveYear::Section& section : year.Sections()) {
        for (qsizetype from = 0; from < section.pictures.size(); from += FilesAtOnce) {
            QStringList paths = section.pictures.mid(from, FilesAtOnce);
            for (QString& path : paths)
                path.prepend(section.path);
            for (const PictureSurvey::Finding& finding :
                 DecodeAll(paths, [&](int some) { ShowProgress(year, done + some); })) {
                sums.IsDamaged(finding.path);
                m_findings.TellPath(Damaged, finding.path, finding.reason);
            }
            done += paths.size();
        }
    }
}

void Verification::TellRowsWithoutFile(const ArchiveYear& year, QList<PictureKey> rows,
                                       const std::optional<PictureKey>& after)
{
    // Filed since the folder was listed. All are asked for in one call: a million rows may have lost their files.
    if (!rows.isEmpty())
        rows = filecalls::Ask([yearFolder = year.Path(), rows] { return WithoutPicture(yearFolder, rows); });
    if (rows.isEmpty() || (year.IsThere() && !FolderExists(year.Path())))
        return;
    // Or deleted; a picture that came into the page pushes none out of it.
    const QList<PictureKey> again = StoredPictures(year.Year(), after, 2 * RowsAtOnce);
    const std::set<PictureKey> still(again.begin(), again.end());
    for (const PictureKey& row : rows) {
        if (!still.contains(row))
            continue;
        const QString text = u"%1 %2 %3 %4"_s.arg(row.chart, row.ymd, row.etc, NumberText(row.number));
        if (!PathOf(year.Path(), row))
            m_findings.Tell(NoFile, text, u"파일 이름이 될 수 없는 기록"_s, FactsOf(row));
        else
            m_findings.TellPath(NoFile, *PathOf(year.Path(), row), text, FactsOf(row));
    }
}

void Verification::TellVisitsWithoutRow(const ArchiveYear& year, const QList<PictureKey>& rows)
{
    QList<PictureKey> visits;
    QStringList charts;
    for (const PictureKey& row : rows) {
        // A visit's rows follow one another, also from one page to the next; those of two sections may be mixed.
        if (const PictureKey visit = row.OfVisit(); visit != m_lastVisit) {
            m_lastVisit = visit;
            visits.append(visit);
            if (charts.isEmpty() || charts.last() != visit.chart)
                charts.append(visit.chart);
        }
    }
    const std::set<PictureKey> withRow = VisitsWithRow(year.Year(), charts);
    for (const PictureKey& visit : visits) {
        if (withRow.contains(visit))
            continue;
        // Being written or deleted, or the same to the database though not letter by letter.
        if (m_findings.IsTold(NoVisitRow) && (HasVisitRow(VisitOf(year.Path(), visit)) ||
                                              StoredNumbers(VisitOf(year.Path(), visit), NumberOrder::Any).isEmpty()))
            continue;
        m_findings.Tell(NoVisitRow, u"%1 %2 %3"_s.arg(visit.chart, visit.ymd, visit.etc), u"그림의 기록만 있음"_s,
                        FactsOf(visit));
    }
}

void Verification::TellFilesWithoutRow(const ArchiveYear& year)
{
    for (const ArchiveYear::Section& section : year.Sections()) {
        QList<QString> names;
        QList<PictureKey> keys;
        const auto tell = [&] {
            // Rows that came in since they were read.
            const std::set<PictureKey> withRow = PicturesWithRow(section.name, keys);
            for (qsizetype index = 0; index < names.size(); ++index) {
                const auto [visit, number] = ArchiveYear::PictureOf(names[index], section.name, year.Path());
                const QString path = section.path + names[index];
                const bool hasRow = withRow.contains(keys[index]);
                const bool isElsewhere = visit.ymd.left(4) != year.Year();
                const bool isTwice = hasRow && NumberClaim::PicturesThere(visit, number) > 1;
                // One whose rows are on their way is told of by its claim.
                if ((hasRow && !isElsewhere && !isTwice) || NumberClaim::Stands(visit, number) || !PictureExists(path))
                    continue;
                m_findings.TellPath(NoRow, path,
                                    isElsewhere ? u"다른 해의 그림"_s
                                    : isTwice   ? u"같은 번호의 그림이 둘"_s
                                                : QString(),
                                    FactsOf(keys[index]));
            }
            names.clear();
            keys.clear();
        };
        for (qsizetype index = 0; index < section.pictures.size(); ++index) {
            if (section.hasRow[static_cast<size_t>(index)])
                continue;
            names.append(section.pictures[index]);
            keys.append(KeyOf(ArchiveYear::PictureOf(names.last(), section.name, year.Path())));
            if (names.size() == FilesAtOnce)
                tell();
        }
        tell();
    }
}

void Verification::CheckMovies(const ArchiveYear& year)
{
    MovieCheck movies(year, m_findings);
    movies.Check(m_learns);
    m_withoutSum += movies.Without();
    m_learned += movies.Learned();
    for (const QString& name : year.Movies().names.files) {
        if (!MovieCheck::IsMovie(name))
            TellOther(year.Movies().path, name);
    }
}

/// What keeps a folder, or a name in it, from being looked through.
void Verification::TellFolder(const ArchiveYear::Folder& folder)
{
    if (!folder.fault.isEmpty())
        m_findings.TellPath(Unreadable, folder.path, folder.fault);
    for (const QString& name : folder.names.others) {
        if (Files().KindOf(folder.path + name) != FileKind::None)
            m_findings.TellPath(NotAFile, folder.path + name, u"링크나 파이프 등은 읽지 않음"_s);
    }
    for (const QString& name : folder.names.broken)
        m_findings.TellPath(BrokenName, folder.path + name, u"글자로 읽을 수 없는 이름"_s);
}

void Verification::TellFolders(const ArchiveYear& year)
{
    ArchiveYear::Folder own{year.Path(), year.Names()};
    for (const QString& name : year.Names().others) {
        if (!year.Names().folders.contains(name))
            continue;
        own.names.others.removeOne(name);
        m_findings.TellPath(FolderLink, year.Path() + name, u"링크가 가리키는 폴더를 살펴봄"_s);
    }
    TellFolder(own);
    for (const QString& name : own.names.files)
        TellOther(own.path, name);
    for (ArchiveYear::Section section : year.Sections()) {
        if (const auto rows = m_unmatched.find(section.name); rows != m_unmatched.end())
            section.fault += u", 기록 %1건을 견주지 못함"_s.arg(rows->second);
        TellFolder(section);
        for (const QString& name : section.names.folders) {
            if (ArchiveYear::PictureOf(name, section.name, year.Path()).second > 0)
                m_findings.TellPath(NotAFile, section.path + name, u"그림의 이름을 가진 폴더"_s);
        }
    }
    for (const ArchiveYear::Folder& folder : year.LogFolders())
        TellFolder(folder);
    TellFolder(year.Movies());
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
    }
    for (const ArchiveYear::Folder& folder : year.LogFolders()) {
        for (const QString& name : folder.names.files) {
            if (name.startsWith(u'.'))
                TellOther(folder.path, name);
        }
    }
}

void Verification::TellOther(const QString& folder, const QString& name)
{
    const QString mark = Files().MarkOfPartial(name);
    if (!mark.isEmpty())
        TellLeftover(folder + name, u"쓰던 파일"_s, mark);
    else // Of no program of the station: worth a line, and no fault.
        m_findings.TellPath(UnknownFile, folder + name);
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
    // Whether another machine's station is at its work can't be seen from here: as at the start of one, a day has to
    // pass.
    const bool isLeft = holder == Holder::Dead || (isElsewhere && seconds * 1000 > AbandonedMs);
    m_findings.TellPath(isLeft ? Leftover : BeingWritten, path, u"%1, %2, %3"_s.arg(what, age, owner));
}

int Verification::Conclude()
{
    if (Surroundings.showsProgress)
        TerminalOutput(stderr) << u'\n';
    if (m_learns)
        m_report.Total(u"합을 받아들인 파일 %1개"_s.arg(m_learned), {{u"learned"_s, m_learned}});
    m_report.Total(m_withoutSum > 0 ? u"합이 없는 파일 %1개"_s.arg(m_withoutSum) : QString(),
                   {{u"withoutSum"_s, m_withoutSum}});
    m_report.Total(u"그림 %1장, 이상 %2건"_s.arg(m_pictures).arg(m_findings.FaultCount()),
                   {{u"pictures"_s, m_pictures}, {u"faults"_s, m_findings.FaultCount()}});
    return m_findings.FaultCount() == 0 ? AllWell : Found;
}

} // namespace

int VerifyArchive(const QString& year, const QStringList& options, Report& report)
{
    static const QRegularExpression form(uR"(^\d{4}$)"_s);
    const bool isThisYear = options.contains(u"--this-year"_s);
    if (!year.isEmpty() && (isThisYear || !form.match(year).hasMatch())) {
        TellOnError(isThisYear ? u"연도와 --this-year 가운데 하나만 적습니다."_s : u"연도는 2026처럼 적습니다."_s);
        return UsedWrongly;
    }
    Verification verification({.decodes = options.contains(u"--decode"_s),
                               .learns = options.contains(u"--learn"_s),
                               .tellsAll = options.contains(u"--all"_s)},
                              report);
    const QStringList linked = Files().Names(ClientSetup.CaptureRoot).others.filter(form);
    QStringList years{isThisYear ? UseService<Desktop>().Today().toString(u"yyyy"_s) : year};
    if (years.first().isEmpty()) {
        years = ArchiveYears() + StoredYears() + linked;
        years.removeDuplicates();
        years.sort();
    }
    if (years.isEmpty())
        verification.TellNothing();
    for (const QString& each : years) {
        if (linked.contains(each))
            verification.TellLinkedYear(each);
        verification.CheckYear(each);
        report.Flush();
    }
    return verification.Conclude();
}
