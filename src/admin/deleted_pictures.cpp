#include "admin/deleted_pictures.h"

#include "admin/commands.h"
#include "admin/Report.h"
#include "contracts/files.h"
#include "filing/capture_folders.h"
#include "filing/capture_wastebasket.h"
#include "filing/picture_restore.h"
#include "frame/services.h"
#include "session/VisitContext.h"
#include "text/date_routines.h"
#include "text/text_routines.h"

#include <QRegularExpression>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

const QString LogEnding = u"Log"_s;

QStringList FoldersIn(const QString& folder)
{
    QStringList names;
    for (const FolderEntry& entry : Files().Entries(folder)) {
        // What the station puts into a link to a folder lies there all the same.
        if (entry.IsFolder || (entry.IsLink && FolderExists(folder + entry.Name)))
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
    // "...003-ID.jpg" has made way for a newer one; a name that was given by hand, such as "...003 (2).jpg", is of that
    // number too.
    static const QRegularExpression form(uR"(^(.{8})(\d{8})(\d{3,5})(?:\D.*)?\.(jpg|bmp)$)"_s);
    for (const FolderEntry& entry : Files().Entries(folder)) {
        const QString source = picture_restore::SourceOf(entry.Name);
        const QRegularExpressionMatch match = form.match(source.isEmpty() ? entry.Name : source);
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
        picture.wasSwept = !Files().FileNote(picture.Path(), SweptNote).isEmpty();
        picture.isTaken = !source.isEmpty();
        found << picture;
    }
}

/// Hands out the pictures of one folder after the other.
void ForEachLogFolder(const QString& chart, const QString& ymd,
                      const std::function<void(const QList<DeletedPicture>&)>& visit)
{
    for (const QString& year : ymd.isEmpty() ? ArchiveYears() : QStringList{ymd.left(4)}) {
        const QString yearFolder = YearFolder(ClientSetup.CaptureRoot, year);
        if (!FolderExists(yearFolder))
            continue;
        for (const QString& section : SectionsWithLog(yearFolder)) {
            QList<DeletedPicture> found;
            AddFolder(yearFolder, section, chart, ymd, found);
            visit(found);
        }
    }
}

} // namespace

QStringList ArchiveYears()
{
    static const QRegularExpression year(uR"(^\d{4}$)"_s);
    return FoldersIn(ClientSetup.CaptureRoot).filter(year);
}

QStringList SectionsAmong(const QStringList& folderNames)
{
    QStringList sections = folderNames;
    sections.removeIf([&folderNames](const QString& name) {
        return IsLogName(name, folderNames) || !IsPathPart(name) || SectionFolder({}, name) == MovieFolder({});
    });
    return sections;
}

QStringList SectionsWithLog(const QString& yearFolder)
{
    QStringList sections;
    const QStringList names = FoldersIn(yearFolder);
    for (const QString& name : names) {
        if (IsLogName(name, names))
            sections << name.chopped(LogEnding.size());
    }
    return sections;
}

QStringList LogsAmong(const QStringList& folderNames)
{
    QStringList logs = folderNames;
    logs.removeIf([&folderNames](const QString& name) { return !IsLogName(name, folderNames) || !IsPathPart(name); });
    return logs;
}

QList<DeletedPicture> DeletedPictures(const QString& chart, const QString& ymd)
{
    QList<DeletedPicture> found;
    ForEachLogFolder(chart, ymd, [&found](const QList<DeletedPicture>& some) { found += some; });
    return found;
}

int ListDeleted(const QStringList& arguments, Report& report)
{
    qint64 count = 0;
    ForEachLogFolder(arguments.value(0), arguments.value(1), [&](const QList<DeletedPicture>& pictures) {
        for (const DeletedPicture& picture : pictures) {
            const Visit& visit = picture.visit;
            report.Item(u"%1 %2 %3 %4 "_s.arg(visit.chart, visit.ymd, visit.etc, NumberText(picture.number)) +
                            picture.name +
                            u" %1바이트 %2 %3"_s.arg(picture.size)
                                .arg(picture.movedAt.toString(u"yyyy-MM-dd HH:mm"_s),
                                     (picture.wasSwept ? u"정리됨(기록이 없던 그림)"_s : u"삭제됨"_s) +
                                         (picture.isTaken ? u", 되살리는 중"_s : QString())),
                        {{u"chart"_s, visit.chart},
                         {u"date"_s, visit.ymd},
                         {u"section"_s, visit.etc},
                         {u"number"_s, picture.number},
                         {u"file"_s, picture.name},
                         {u"path"_s, NativePath(picture.Path())},
                         {u"bytes"_s, picture.size},
                         {u"movedAt"_s, picture.movedAt.toString(Qt::ISODate)},
                         {u"swept"_s, picture.wasSwept},
                         {u"beingRestored"_s, picture.isTaken}});
        }
        count += pictures.size();
    });
    report.Total(count == 0 ? u"삭제된 그림이 없습니다."_s : QString(), {{u"pictures"_s, count}});
    return AllWell;
}
