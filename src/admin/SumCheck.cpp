#include "admin/SumCheck.h"

#include "admin/ArchiveFindings.h"
#include "contracts/desktop.h"
#include "contracts/PlatformError.h"
#include "filing/capture_wastebasket.h"
#include "filing/NumberClaim.h"
#include "frame/components.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "text/text_routines.h"

#include <QHash>

#include <algorithm>
#include <map>

using namespace Qt::StringLiterals;
using namespace findings;

namespace {

/// Sums that are held at a time.
constexpr int SumsAtOnce = 2000;
/// Pictures that one statement asks for.
constexpr qsizetype PicturesAtOnce = 200;
/// A picture's sum follows its file within this time.
constexpr int SumFollowsMs = 2000;

QJsonObject FactsOf(const Visit& visit, int number)
{
    return {{u"chart"_s, visit.chart}, {u"date"_s, visit.ymd}, {u"section"_s, visit.etc}, {u"number"_s, number}};
}

QByteArray KeyOf(const PictureDigest& digest)
{
    return {digest.data(), static_cast<qsizetype>(digest.size())};
}

void ForEachPage(const QString& year, const std::function<void(const QList<StoredSum>&)>& tell)
{
    std::optional<StoredSum> last;
    while (true) {
        const std::optional<QList<StoredSum>> sums = StoredSums(year, last, SumsAtOnce);
        if (!sums || sums->isEmpty())
            return;
        tell(*sums);
        if (sums->size() < SumsAtOnce)
            return;
        last = sums->last();
    }
}

} // namespace

void SumCheck::Read(const std::function<void()>& between)
{
    ForEachPage(m_year.Year(), [&](const QList<StoredSum>& sums) {
        QList<StoredSum> missing;
        for (const StoredSum& sum : sums) {
            m_hasDeleted |= !sum.IsLive();
            if (!sum.IsLive())
                continue;
            const ArchiveYear::Found found = m_year.Match(sum.picture, DigestIn(sum.sum.hash));
            if (found == ArchiveYear::Found::NoFile || found == ArchiveYear::Found::NoFolder)
                missing.append(sum);
        }
        LookForMissing(missing);
        between();
    });
}

void SumCheck::LookForMissing(const QList<StoredSum>& sums)
{
    // One whose row is there is told of by that.
    std::map<QString, QList<StoredSum>> sections;
    for (const StoredSum& sum : sums)
        sections[sum.picture.etc].append(sum);
    for (const auto& [section, ofSection] : sections) {
        for (qsizetype from = 0; from < ofSection.size(); from += PicturesAtOnce) {
            const QList<StoredSum> some = ofSection.mid(from, PicturesAtOnce);
            QList<PictureKey> keys;
            for (const StoredSum& sum : some)
                keys.append(sum.picture);
            const std::set<PictureKey> withRow = PicturesWithRow(section, keys);
            std::ranges::copy_if(some, std::back_inserter(m_missing),
                                 [&](const StoredSum& sum) { return !withRow.contains(sum.picture); });
        }
    }
}

bool SumCheck::HasBeenTold(const ArchiveYear::Section& section, qsizetype at) const
{
    return !m_damaged.isEmpty() && m_damaged.contains(section.path + section.pictures[at]);
}

void SumCheck::Compare(const PictureSurvey& survey)
{
    QList<Difference> differences;
    for (size_t place = 0; place < m_year.Sections().size(); ++place) {
        const ArchiveYear::Section& section = m_year.Sections()[place];
        for (size_t index = 0; index < section.digests.size(); ++index) {
            const PictureSurvey::Seen& seen = survey.ByPlace()[place][index];
            const auto at = static_cast<qsizetype>(index);
            if (!section.digests[index] || seen.bytes < 0 || seen.digest == *section.digests[index] ||
                HasBeenTold(section, at))
                continue;
            const auto [visit, number] = ArchiveYear::PictureOf(section.pictures[at], section.name, m_year.Path());
            differences.append({section.path + section.pictures[at], visit, number, *section.digests[index]});
        }
    }
    TellDifferences(differences);
    TellMissing();
    if (m_hasDeleted)
        CompareDeleted();
}

bool SumCheck::StillDiffers(Difference& difference) const
{
    try {
        difference.found = DigestOf(Files().ReadArchivedFile(difference.path));
    } catch (const PlatformError&) {
        if (Files().KindOf(difference.path) == FileKind::None)
            return false;
        throw;
    }
    QList<StoredSum> live = SumsOf(difference.visit, difference.number);
    live.removeIf([](const StoredSum& sum) { return !sum.IsLive(); });
    return !live.isEmpty() &&
           std::ranges::none_of(live, [&](const StoredSum& sum) { return DigestIn(sum.sum.hash) == difference.found; });
}

void SumCheck::TellDifferences(const QList<Difference>& differences)
{
    const QDateTime now = QDateTime::currentDateTime();
    const bool isAnyNew = std::ranges::any_of(differences, [&now](const Difference& difference) {
        const QDateTime changed = Files().LastModified(difference.path);
        return changed.isValid() && qAbs(changed.msecsTo(now)) < SumFollowsMs;
    });
    // The station that has just written it tells what it holds.
    if (isAnyNew)
        waiting::ServeFor(
            SumFollowsMs, [] { return UseService<Desktop>().EndIsRequested(); }, WaitInput::Dropped);
    QList<Difference> still;
    QHash<QByteArray, qsizetype> written;
    for (Difference difference : differences) {
        if (!StillDiffers(difference))
            continue;
        written.insert(KeyOf(difference.written), still.size());
        still.append(difference);
    }
    for (qsizetype index = 0; index < still.size(); ++index) {
        const Difference& own = still[index];
        const qsizetype from = written.value(KeyOf(own.found), index);
        const Difference& other = still[from];
        QJsonObject facts = FactsOf(own.visit, own.number);
        if (from == index) {
            m_findings.TellPath(Changed, own.path, u"저장한 그림과 내용이 다름"_s, facts);
            continue;
        }
        const bool isPair = other.found == own.written;
        // One line for both.
        if (isPair && from < index && written.value(KeyOf(other.found), from) == index)
            continue;
        facts[u"other"_s] = NativePath(other.path);
        m_findings.TellPath(isPair ? Swapped : Changed, own.path,
                            isPair ? u"%1 그림과 자리가 바뀜"_s.arg(NativePath(other.path))
                                   : u"%1 그림의 내용이 들어 있음"_s.arg(NativePath(other.path)),
                            facts);
    }
}

void SumCheck::TellMissing()
{
    for (const StoredSum& sum : std::as_const(m_missing)) {
        const PictureKey& key = sum.picture;
        const Visit visit{key.chart, {}, key.ymd, key.etc, m_year.Path(), u"jpg"_s};
        const QList<StoredSum> present = SumsOf(visit, key.number);
        const bool isLive =
            std::ranges::any_of(present, [&sum](const StoredSum& each) { return each.id == sum.id && each.IsLive(); });
        // Filed or deleted meanwhile. Texts that can't be a file's name have none.
        if (!isLive || HasPictureRow(visit, key.number) ||
            (IsPathPart(key.etc) && IsPathPart(visit.PicturePrefix()) &&
             NumberClaim::IsPictureThere(visit, key.number)))
            continue;
        m_findings.Tell(NoPicture, u"%1 %2 %3 %4"_s.arg(key.chart, key.ymd, key.etc, NumberText(key.number)),
                        u"합만 있고 그림도 기록도 없음"_s, FactsOf(visit, key.number));
    }
}

void SumCheck::CompareDeleted()
{
    ForEachPage(m_year.Year(), [this](const QList<StoredSum>& sums) {
        for (const StoredSum& sum : sums) {
            if (!sum.IsLive())
                CompareDeleted(sum);
        }
    });
}

void SumCheck::CompareDeleted(const StoredSum& sum)
{
    const PictureKey& key = sum.picture;
    if (!IsPathPart(key.etc))
        return;
    const Visit visit{key.chart, {}, key.ymd, key.etc, m_year.Path(), u"jpg"_s};
    const auto log = std::ranges::find(m_year.LogFolders(), visit.LogFolder(), &ArchiveYear::Folder::path);
    if (log == m_year.LogFolders().end())
        return;
    const auto has = [&log](const QString& name) { return std::ranges::binary_search(log->names.files, name); };
    for (const QString& ending : {u".jpg"_s, u".bmp"_s}) {
        const QString plain = visit.PicturePrefix() + NumberText(key.number) + ending;
        QString name = PathWithIdentity(plain, sum.id);
        bool isOwn = has(name);
        if (!isOwn) {
            name = plain;
            const QString id = has(plain) ? IdentityOfDeleted(log->path + plain) : QString();
            isOwn = id == sum.id;
            // A file system that keeps no notes has none; another picture's isn't this one.
            if (!has(plain) || (!isOwn && !id.isEmpty()))
                continue;
        }
        PictureDigest found{};
        try {
            found = DigestOf(Files().ReadArchivedFile(log->path + name));
        } catch (const PlatformError&) {
            if (Files().KindOf(log->path + name) == FileKind::None)
                return; // On its way back.
            throw;
        }
        const QList<StoredSum> present = SumsOf(visit, key.number);
        const auto isMeant = [&](const StoredSum& each) { return !isOwn || each.id == sum.id; };
        const auto isFound = [&](const StoredSum& each) { return DigestIn(each.sum.hash) == found; };
        const auto newest = std::ranges::find_if_not(present, &StoredSum::IsLive);
        const bool isToldHere = newest != present.end() && (isOwn || newest->id == sum.id);
        if (isToldHere &&
            std::ranges::none_of(present, [&](const StoredSum& each) { return isMeant(each) && isFound(each); }))
            m_findings.TellPath(DeletedChanged, log->path + name, u"지울 때의 그림과 내용이 다름"_s,
                                FactsOf(visit, key.number));
        return;
    }
}

int SumCheck::Learn(const PictureSurvey& survey)
{
    int learned = 0;
    for (size_t place = 0; place < m_year.Sections().size(); ++place) {
        const ArchiveYear::Section& section = m_year.Sections()[place];
        for (size_t index = 0; index < section.digests.size(); ++index) {
            const PictureSurvey::Seen& seen = survey.ByPlace()[place][index];
            const auto at = static_cast<qsizetype>(index);
            if (section.digests[index] || !section.hasRow[index] || seen.bytes < 0 || HasBeenTold(section, at))
                continue;
            const auto [visit, number] = ArchiveYear::PictureOf(section.pictures[at], section.name, m_year.Path());
            if (TrustSum(visit, number, {HashOf(seen.digest), seen.bytes})) {
                m_year.Match({visit.chart, visit.ymd, visit.etc, number}, seen.digest);
                ++learned;
            }
        }
    }
    return learned;
}

int SumCheck::Without() const
{
    qsizetype without = 0;
    for (const ArchiveYear::Section& section : m_year.Sections())
        without += std::ranges::count_if(section.digests, [](const auto& digest) { return !digest; });
    return static_cast<int>(without);
}
