#include "admin/deleted_pictures.h"

#include "admin/commands.h"
#include "contracts/files.h"
#include "filing/capture_folders.h"
#include "filing/capture_wastebasket.h"
#include "frame/services.h"
#include "frame/terminal.h"
#include "session/VisitContext.h"
#include "text/date_routines.h"
#include "text/text_routines.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

const QString LogEnding = u"Log"_s;

QStringList FolderNames(const QString& folder)
{
    QStringList names;
    for (const FolderEntry& entry : Files().Entries(folder)) {
        if (entry.IsFolder)
            names << entry.Name;
    }
    return names;
}

/// Its section's folder lies beside it, or did so once.
bool IsLogName(const QString& name, const QStringList& names)
{
    const QString section = name.chopped(qMin(name.size(), LogEnding.size()));
    return name.endsWith(LogEnding) && (names.contains(section) || SectionsOfClient().contains(section));
}

void AddFolder(const QString& yearFolder, const QString& section, const QString& chart, const QString& ymd,
               QList<DeletedPicture>& found)
{
    const QString folder = LogFolder(yearFolder, section);
    // A name that was given by hand beside the station's own, such as "...003 (2).jpg", is of that number too.
    static const QRegularExpression form(uR"(^(.{8})(\d{8})(\d{3,5})(?:\D.*)?\.(jpg|bmp)$)"_s);
    for (const FolderEntry& entry : Files().Entries(folder)) {
        const QRegularExpressionMatch match = form.match(entry.Name);
        if (!match.hasMatch() || entry.IsFolder || entry.IsLink || entry.IsNameBroken)
            continue;
        DeletedPicture picture;
        picture.visit = {match.captured(1), {}, match.captured(2), section, yearFolder, match.captured(4)};
        picture.number = match.captured(3).toInt();
        if (picture.number <= 0 || picture.number > Visit::LargestNumber ||
            (!chart.isEmpty() && picture.visit.chart != chart) || (!ymd.isEmpty() && picture.visit.ymd != ymd))
            continue;
        picture.name = entry.Name;
        picture.size = entry.Size;
        picture.movedAt = entry.DateLastModified;
        picture.wasSwept = Files().HasFileNote(picture.Path(), SweptNote);
        found << picture;
    }
}

} // namespace

QStringList ArchiveYears()
{
    static const QRegularExpression year(uR"(^\d{4}$)"_s);
    return FolderNames(ClientSetup.CaptureRoot).filter(year);
}

QStringList ArchiveSections(const QString& yearFolder)
{
    const QStringList names = FolderNames(yearFolder);
    QStringList sections = names;
    sections.removeIf([&names](const QString& name) {
        return IsLogName(name, names) || !IsPathPart(name) || SectionFolder({}, name) == MovieFolder({});
    });
    return sections;
}

QList<DeletedPicture> DeletedPictures(const QString& chart, const QString& ymd)
{
    QList<DeletedPicture> found;
    for (const QString& year : ymd.isEmpty() ? ArchiveYears() : QStringList{ymd.left(4)}) {
        const QString yearFolder = YearFolder(ClientSetup.CaptureRoot, year);
        if (!FolderExists(yearFolder))
            continue;
        const QStringList names = FolderNames(yearFolder);
        for (const QString& name : names) {
            if (IsLogName(name, names))
                AddFolder(yearFolder, name.chopped(LogEnding.size()), chart, ymd, found);
        }
    }
    return found;
}

int ListDeleted(const QStringList& arguments, TerminalOutput& out)
{
    const QList<DeletedPicture> pictures = DeletedPictures(arguments.value(0), arguments.value(1));
    for (const DeletedPicture& picture : pictures) {
        const Visit& visit = picture.visit;
        out << visit.chart << u' ' << visit.ymd << u' ' << visit.etc << u' ' << NumberText(picture.number) << u' '
            << picture.name << u' ' << picture.size << u"바이트 "_s << picture.movedAt.toString(u"yyyy-MM-dd HH:mm"_s)
            << (picture.wasSwept ? u" 정리됨(기록이 없던 그림)"_s : u" 삭제됨"_s) << u'\n';
    }
    if (pictures.isEmpty())
        out << u"삭제된 그림이 없습니다.\n"_s;
    return AllWell;
}
