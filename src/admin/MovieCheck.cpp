#include "admin/MovieCheck.h"

#include "admin/ArchiveFindings.h"
#include "admin/file_checks.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"
#include "text/text_routines.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace findings;

namespace {

Visit VisitOf(const QString& chart, const QString& ymd, const QString& yearFolder)
{
    return {chart, {}, ymd, QString::fromUtf16(MovieSection), yearFolder, {}};
}

QJsonObject FactsOf(const Visit& visit, int number)
{
    return {{u"chart"_s, visit.chart}, {u"date"_s, visit.ymd}, {u"number"_s, number}};
}

} // namespace

bool MovieCheck::IsMovie(const QString& name)
{
    return name.endsWith(u".avi", Qt::CaseInsensitive) && !name.startsWith(u'.');
}

void MovieCheck::Check(bool learns)
{
    for (const StoredSum& sum : MovieSums(m_year.Year())) {
        const PictureKey& key = sum.picture;
        const Visit visit = VisitOf(key.chart, key.ymd, m_year.Path());
        if (IsPathPart(visit.PicturePrefix()))
            m_sums.insert(MoviePath(visit.MovieStem(), key.number), sum);
    }
    for (const QString& name : m_year.Movies().names.files) {
        const QString path = m_year.Movies().path + name;
        if (!IsMovie(name))
            continue;
        try {
            CheckMovie(name, learns);
        } catch (const DatabaseAway&) {
            throw;
        } catch (const PlatformError& error) {
            // Deleted since it was listed is no finding.
            if (Files().KindOf(path) != FileKind::None)
                m_findings.TellPath(Damaged, path, error.Text());
        }
    }
    if (!m_year.Movies().fault.isEmpty())
        return;
    for (const StoredSum& sum : std::as_const(m_sums)) {
        const Visit visit = VisitOf(sum.picture.chart, sum.picture.ymd, m_year.Path());
        const int number = sum.picture.number;
        const QString path = MoviePath(visit.MovieStem(), number);
        if (Files().KindOf(path) == FileKind::None && StillDiffers(path, sum, {}))
            m_findings.TellPath(NoPicture, path, u"합만 있고 동영상이 없음"_s, FactsOf(visit, number));
    }
}

void MovieCheck::CheckMovie(const QString& name, bool learns)
{
    const QString path = m_year.Movies().path + name;
    const auto sum = m_sums.constFind(path);
    if (sum == m_sums.cend()) {
        if (!HasMovieIndex(path))
            m_findings.TellPath(NoIndex, path);
        else if (learns)
            Learn(name);
        else
            ++m_without;
        return;
    }
    const StoredSum written = m_sums.take(path);
    const PictureSum found = SumOfFile(path);
    if (found != written.sum && StillDiffers(path, written, found))
        m_findings.TellPath(Changed, path, u"저장한 동영상과 내용이 다름"_s,
                            FactsOf(VisitOf(written.picture.chart, written.picture.ymd, {}), written.picture.number));
    else if (!HasMovieIndex(path))
        m_findings.TellPath(NoIndex, path);
}

bool MovieCheck::StillDiffers(const QString& path, const StoredSum& sum, const PictureSum& found) const
{
    const Visit visit = VisitOf(sum.picture.chart, sum.picture.ymd, m_year.Path());
    const QList<StoredSum> present = SumsOf(visit, sum.picture.number);
    const auto own =
        std::ranges::find_if(present, [&](const StoredSum& each) { return each.id == sum.id && each.IsLive(); });
    return own != present.end() && own->sum == sum.sum &&
           (found.IsKnown() ? SumOfFile(path) == found : Files().KindOf(path) == FileKind::None);
}

void MovieCheck::Learn(const QString& name)
{
    // Chart and date have their widths; what another program has put there is nobody's.
    static const QRegularExpression form(uR"(^(.{8})(\d{8})(\d{3,})\.avi$)"_s,
                                         QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch parts = form.match(name);
    if (!parts.hasMatch()) {
        ++m_without;
        return;
    }
    const Visit visit = VisitOf(parts.captured(1), parts.captured(2), m_year.Path());
    if (TrustSum(visit, parts.captured(3).toInt(), SumOfFile(m_year.Movies().path + name)))
        ++m_learned;
}
