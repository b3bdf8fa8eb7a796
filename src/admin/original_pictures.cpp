#include "admin/original_pictures.h"

#include "admin/commands.h"
#include "admin/deleted_pictures.h"
#include "admin/Report.h"
#include "contracts/files.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "filing/capture_folders.h"
#include "filing/capture_root.h"
#include "filing/capture_wastebasket.h"
#include "filing/originals.h"
#include "frame/services.h"
#include "frame/terminal.h"
#include "records/acts.h"
#include "records/picture_sums.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <QUuid>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// The live picture of that number, whatever its extension; its visit's is empty when there is none.
Visit LiveVisit(const QStringList& arguments)
{
    Visit visit{arguments[0], {}, arguments[1], arguments[2], YearFolder(ClientSetup.CaptureRoot, arguments[1]), {}};
    const int number = WholeNumber(arguments[3]);
    for (const QString& ending : {VisitContext.ImageExt, u"jpg"_s, u"bmp"_s}) {
        visit.imageExt = ending;
        if (number > 0 && number <= Visit::LargestNumber && Files().KindOf(visit.PicturePath(number)) == FileKind::File)
            return visit;
    }
    visit.imageExt.clear();
    return visit;
}

/// Where the original's picture is now, as far as the table tells.
QString StandingOf(const QList<StoredSum>& sums, const QString& picture, int& number)
{
    const auto own = std::ranges::find(sums, picture, &StoredSum::id);
    number = own != sums.end() ? own->picture.number : 0;
    if (own == sums.end())
        return u"번호를 알 수 없음"_s;
    return own->IsLive() ? u"%1번"_s.arg(NumberText(number)) : u"%1번(삭제됨)"_s.arg(NumberText(number));
}

/// As the table has it; without the table what lies there is known as well as it can be.
bool IsKnownAs(const Visit& visit, int number, const PictureSum& sum)
{
    const QList<StoredSum> sums = SumsOfVisit(visit);
    return std::ranges::none_of(
        sums, [&](const StoredSum& each) { return each.picture.number == number && each.IsLive() && each.sum != sum; });
}

/// Puts the original in the place of the picture, which becomes a deleted one of its own.
void PutBack(const Visit& visit, int number, const QByteArray& original, const QByteArray& marked)
{
    const QString live = visit.PicturePath(number);
    const QString id = QUuid::createUuid().toString(QUuid::Id128);
    const QByteArray version = CopyToLogFolder(visit, number, visit.captureDir, id);
    if (version.isEmpty() || Files().VersionOf(live) != version ||
        Files().ReadArchivedFile(visit.DeletedPicturePath(number)) != marked)
        throw PlatformError(u"그림이 그사이 다른 것으로 바뀌어 되돌리지 않았습니다.!! (%1)"_s.arg(NativePath(live)));
    // It comes back with an original, as every other one.
    Files().WriteNewFile(originals::PathFor(visit, id), original);
    KeepSum(visit, number, id, SumOf(marked), SumState::Deleted);
    try {
        WriteWholeFile(live, original);
    } catch (const StoredWithFault& error) {
        TellOnError(error.Text());
    }
}

} // namespace

QList<OriginalPicture> OriginalPictures(const QString& chart, const QString& ymd)
{
    QList<OriginalPicture> found;
    for (const QString& year : ymd.isEmpty() ? ArchiveYears() : QStringList{ymd.left(4)}) {
        const QString yearFolder = YearFolder(ClientSetup.CaptureRoot, year);
        if (!FolderExists(yearFolder))
            continue;
        const QString prefix = QString::fromUtf16(originals::Prefix) + chart + ymd;
        for (const QString& section : SectionsWithLog(yearFolder)) {
            for (const QString& name : Files().FilesStartingWith(LogFolder(yearFolder, section), prefix)) {
                const std::optional<originals::Name> facts = originals::Read(name);
                if (!facts || facts->chart != chart)
                    continue;
                OriginalPicture original;
                original.visit = {chart, {}, facts->ymd, section, yearFolder, facts->imageExt};
                original.picture = facts->picture;
                original.name = name;
                original.keptAt = Files().LastModified(original.Path());
                found << original;
            }
        }
    }
    return found;
}

int ListOriginals(const QStringList& arguments, Report& report)
{
    const QList<OriginalPicture> originals = OriginalPictures(arguments[0], arguments.value(1));
    for (const OriginalPicture& original : originals) {
        const Visit& visit = original.visit;
        int number = 0;
        const QString standing = StandingOf(SumsOfVisit(visit), original.picture, number);
        report.Item(u"%1 %2 %3 "_s.arg(visit.chart, visit.ymd, visit.etc) + standing + u' ' + original.name +
                        u" %1 보관됨"_s.arg(original.keptAt.toString(u"yyyy-MM-dd HH:mm"_s)),
                    {{u"chart"_s, visit.chart},
                     {u"date"_s, visit.ymd},
                     {u"section"_s, visit.etc},
                     {u"number"_s, number},
                     {u"picture"_s, original.picture},
                     {u"path"_s, NativePath(original.Path())},
                     {u"keptAt"_s, original.keptAt.toString(Qt::ISODate)}});
    }
    report.Total(originals.isEmpty() ? u"보관된 원래 그림이 없습니다."_s : QString(),
                 {{u"originals"_s, originals.size()}});
    return AllWell;
}

int RestoreOriginal(const QStringList& arguments, TerminalOutput& out)
{
    const Visit visit = LiveVisit(arguments);
    const int number = WholeNumber(arguments[3]);
    if (visit.imageExt.isEmpty()) {
        TellOnError(u"그런 그림이 없습니다.!! 삭제된 그림이면 먼저 restore로 되살리세요."_s);
        return Found;
    }
    const QString path = originals::PathOf(visit, number);
    if (path.isEmpty()) {
        TellOnError(u"이 그림은 표시하기 전의 원래 그림이 보관되어 있지 않습니다.!! originals로 확인하세요."_s);
        return Found;
    }
    if (Pictures().Load(path).isNull()) {
        TellOnError(
            u"원래 그림을 읽을 수 없어 되돌리지 않습니다. 파일은 그대로 있습니다.!! (%1)"_s.arg(NativePath(path)));
        return Found;
    }
    capture_root::Judge(ClientSetup.CaptureRoot);
    capture_root::Check(visit.captureDir);
    const QByteArray original = Files().ReadArchivedFile(path);
    const QByteArray marked = Files().ReadArchivedFile(visit.PicturePath(number));
    const bool isBack = marked == original;
    if (!isBack)
        PutBack(visit, number, original, marked);
    if (isBack && IsKnownAs(visit, number, SumOf(original))) {
        out << u"이미 원래 그림입니다: %1 %2 %3 %4번\n"_s.arg(visit.chart, visit.ymd, visit.etc, NumberText(number));
        return AllWell;
    }
    // Also for a run that was cut off.
    ReplaceSum(visit, number, SumOf(original), SumState::Live);
    SendAgain(visit, number, PacsLine::Changed);
    acts::Record(acts::Kind::Restored, visit, number, u"original"_s);
    out << u"원래 그림으로 되돌렸습니다: %1 %2 %3 %4번 (%5)\n"_s.arg(
               visit.chart, visit.ymd, visit.etc, NumberText(number), NativePath(visit.PicturePath(number)))
        << u"표시한 그림은 Log 폴더에 있습니다: %1\n"_s.arg(NativePath(visit.DeletedPicturePath(number)));
    return AllWell;
}
