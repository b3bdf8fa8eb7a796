#include "admin/ArchiveYear.h"

#include "admin/deleted_pictures.h"
#include "contracts/files.h"
#include "frame/services.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype ChartSize = 8;
constexpr qsizetype DateSize = 8;
constexpr qsizetype FewestDigits = 3;

/// A failing list is no empty one.
QStringList NamesIn(const QString& folder)
{
    QStringList names = Files().FilesStartingWith(folder, {});
    if (names.isEmpty())
        Files().Entries(folder);
    return names;
}

} // namespace

std::pair<Visit, int> ArchiveYear::PictureOf(const QString& name, const QString& section, const QString& yearFolder)
{
    const qsizetype point = name.indexOf(u'.');
    const QStringView stem = QStringView(name).left(point < 0 ? name.size() : point);
    const QString ending = point < 0 ? QString() : name.mid(point + 1);
    const QStringView digits = stem.mid(qMin(stem.size(), ChartSize + DateSize));
    bool isNumber = false;
    const int number = digits.toInt(&isNumber);
    const bool isPicture = point < 0 || ending == "jpg"_L1 || ending == "bmp"_L1;
    if (digits.size() < FewestDigits || !isNumber || number <= 0 || !isPicture || !digits.front().isDigit())
        return {};
    return {{stem.left(ChartSize).toString(),
             {},
             stem.mid(ChartSize, DateSize).toString(),
             section,
             yearFolder,
             point < 0 ? VisitContext.ImageExt : ending},
            number};
}

ArchiveYear::ArchiveYear(const QString& year) : m_year(year), m_folder(YearFolder(ClientSetup.CaptureRoot, year))
{
    if (!FolderExists(m_folder))
        return;
    for (const QString& name : ArchiveSections(m_folder)) {
        Section section{SectionFolder(m_folder, name), name, {}, {}, {}, {}};
        for (const QString& file : NamesIn(section.path)) {
            const bool isNumbered = PictureOf(file, name, m_folder).second > 0;
            (!isNumbered ? section.others : file.contains(u'.') ? section.pictures : section.claims).append(file);
        }
        section.hasRow.resize(static_cast<size_t>(section.pictures.size()));
        m_places[name] = m_sections.size();
        m_sections.push_back(std::move(section));
    }
}

qsizetype ArchiveYear::PictureCount() const
{
    qsizetype count = 0;
    for (const Section& section : m_sections)
        count += section.pictures.size();
    return count;
}

void ArchiveYear::Match(const PictureKey& row)
{
    if (const auto place = m_places.find(row.etc); place != m_places.end()) {
        Section& section = m_sections[place->second];
        const QString stem = row.chart + row.ymd + NumberText(row.number) + u'.';
        const QString other = VisitContext.ImageExt == "jpg"_L1 ? u"bmp"_s : u"jpg"_s;
        for (const QString& ending : {VisitContext.ImageExt, other}) {
            const auto found = std::ranges::lower_bound(section.pictures, stem + ending);
            if (found == section.pictures.end() || *found != stem + ending)
                continue;
            section.hasRow[static_cast<size_t>(found - section.pictures.begin())] = true;
            return;
        }
    }
    m_withoutFile.append(row);
}
