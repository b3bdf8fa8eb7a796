#include "admin/ArchiveYear.h"

#include "admin/deleted_pictures.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype ChartSize = 8;
constexpr qsizetype DateSize = 8;
constexpr qsizetype FewestDigits = 3;

ArchiveYear::Folder Listed(const QString& path)
{
    ArchiveYear::Folder folder{path};
    try {
        folder.names = Files().Names(path);
    } catch (const PlatformError& error) {
        folder.fault = error.Text();
    }
    return folder;
}

bool IsEmptyFolder(const ArchiveYear::Folder& folder)
{
    const FolderNames& names = folder.names;
    return folder.fault.isEmpty() && names.files.isEmpty() && names.folders.isEmpty() && names.others.isEmpty() &&
           names.broken.isEmpty();
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

ArchiveYear::ArchiveYear(const QString& year)
    : m_year(year), m_path(YearFolder(ClientSetup.CaptureRoot, year)), m_isThere(FolderExists(m_path))
{
    if (!m_isThere)
        return;
    m_names = Files().Names(m_path);
    // As the station does, which asks nothing of a folder but its name.
    for (const QString& name : m_names.others) {
        if (FolderExists(m_path + name))
            m_names.folders.append(name);
    }
    m_names.folders.sort();
    for (const QString& name : SectionsAmong(m_names.folders)) {
        Section section{Listed(SectionFolder(m_path, name)), name};
        for (const QString& file : std::exchange(section.names.files, {})) {
            const bool isNumbered = PictureOf(file, name, m_path).second > 0;
            (!isNumbered ? section.others : file.contains(u'.') ? section.pictures : section.claims).append(file);
        }
        section.hasRow.resize(static_cast<size_t>(section.pictures.size()));
        section.digests.resize(section.hasRow.size());
        m_places[name] = m_sections.size();
        m_sections.push_back(std::move(section));
    }
    for (const QString& name : LogsAmong(m_names.folders))
        m_logs.push_back(Listed(m_path + name + u'\\'));
    if (FolderExists(MovieFolder(m_path)))
        m_movies = Listed(MovieFolder(m_path));
}

bool ArchiveYear::IsEmpty() const
{
    return m_names.files.isEmpty() && m_names.broken.isEmpty() && IsEmptyFolder(m_movies) &&
           std::ranges::all_of(m_logs, IsEmptyFolder) && std::ranges::all_of(m_sections, [](const Section& section) {
               return section.pictures.isEmpty() && section.claims.isEmpty() && section.others.isEmpty() &&
                      IsEmptyFolder(section);
           });
}

qsizetype ArchiveYear::PictureCount() const
{
    qsizetype count = 0;
    for (const Section& section : m_sections)
        count += section.pictures.size();
    return count;
}

ArchiveYear::Found ArchiveYear::Match(const PictureKey& row)
{
    return Find(row, [](Section& section, size_t at) { section.hasRow[at] = true; });
}

ArchiveYear::Found ArchiveYear::Match(const PictureKey& picture, const PictureDigest& digest)
{
    return Find(picture, [&digest](Section& section, size_t at) { section.digests[at] = digest; });
}

ArchiveYear::Found ArchiveYear::Find(const PictureKey& picture, const std::function<void(Section&, size_t)>& tell)
{
    const auto place = m_places.find(picture.etc);
    if (place == m_places.end())
        return Found::NoFolder;
    Section& section = m_sections[place->second];
    if (!section.fault.isEmpty())
        return Found::Unread;
    const QString stem = picture.chart + picture.ymd + NumberText(picture.number) + u'.';
    const QString other = VisitContext.ImageExt == "jpg"_L1 ? u"bmp"_s : u"jpg"_s;
    for (const QString& ending : {VisitContext.ImageExt, other}) {
        const auto found = std::ranges::lower_bound(section.pictures, stem + ending);
        if (found == section.pictures.end() || *found != stem + ending)
            continue;
        tell(section, static_cast<size_t>(found - section.pictures.begin()));
        return Found::File;
    }
    return Found::NoFile;
}
