#include "cdexport/disc_index.h"

#include "cdexport/disc_pages.h"
#include "cdexport/file_origins.h"
#include "cdexport/file_rows.h"
#include "contracts/files.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/file_calls.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "records/capture_index.h"
#include "text/text_routines.h"

#include <QBuffer>
#include <QFileInfo>
#include <QSet>

#include <map>
#include <tuple>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize SmallPixels{240, 180};
constexpr int SmallQuality = 80;
const QString ObjectFolder = u"DICOM/"_s;
const QString ObjectDirectory = u"DICOMDIR"_s;

using disc_pages::Item;
using disc_pages::VisitPage;
using file_origins::Origin;

/// Chart, date, section, movie or not: a visit's movies stand behind its sections.
using VisitKey = std::tuple<QString, QString, bool, QString>;

bool IsPicture(const QString& name)
{
    static const QStringList endings{u"jpg"_s, u"jpeg"_s, u"bmp"_s, u"png"_s};
    return endings.contains(QFileInfo(name).suffix().toLower());
}

/// A name that nothing on the disc has, whatever its case.
QString FreeName(const QString& stem, const QString& ending, const QSet<QString>& taken)
{
    for (int number = 1;; ++number) {
        QString name = stem + (number > 1 ? QString::number(number) : QString()) + ending;
        if (!taken.contains(name.toCaseFolded()))
            return name;
    }
}

QHash<QString, QString> NotesOf(const QString& chart)
{
    QHash<QString, QString> notes;
    for (const VisitLine& line : StoredVisits(chart, u"A"_s))
        notes.insert(line.ymd + line.etc, line.note);
    return notes;
}

/// Small pictures, in the order of the paths; an empty one for what can't be read. Empty when the operator gives it up.
std::optional<QList<QByteArray>> SmallPictures(const QStringList& paths)
{
    QList<QByteArray> encoded;
    const std::unique_ptr<PictureBatch> batch = Pictures().LoadAll(paths, SmallPixels);
    while (encoded.size() < paths.size()) {
        const int at = static_cast<int>(encoded.size());
        const waiting::Outcome outcome =
            waiting::Await(u"CD의 목록을 만들고 있습니다. (%1/%2)"_s.arg(at + 1).arg(paths.size()),
                           [&batch, at] { return batch->IsReady(at); });
        if (outcome != waiting::Outcome::Done)
            return std::nullopt;
        const QImage picture = batch->Take(at);
        QByteArray content;
        QBuffer buffer(&content);
        buffer.open(QIODevice::WriteOnly);
        if (!picture.isNull())
            picture.convertToFormat(QImage::Format_RGB32).save(&buffer, "JPEG", SmallQuality);
        encoded.append(content);
    }
    return encoded;
}

/// The files by visit, and those without an origin.
struct Sorted
{
    std::map<VisitKey, QList<DiscFile>> visits;
    QList<DiscFile> others;
    bool hasObjects = false;
};

Sorted SortFiles(const DiscContent& content, const QHash<QString, Origin>& origins)
{
    Sorted sorted;
    for (const DiscFile& file : content.files) {
        const auto origin = origins.constFind(file.staged);
        if (file.staged.startsWith(ObjectFolder) || file.staged == ObjectDirectory)
            sorted.hasObjects = true;
        else if (origin == origins.constEnd())
            sorted.others.append(file);
        else
            sorted.visits[{origin->chart, origin->ymd, origin->etc.isEmpty(), origin->etc}].append(file);
    }
    for (auto& [key, files] : sorted.visits)
        std::ranges::stable_sort(files, {}, [&](const DiscFile& file) { return origins[file.staged].number; });
    return sorted;
}

QString MadeFolder(const QString& area)
{
    const QString parent = area.left(area.lastIndexOf(u'/', -2) + 1);
    const QString name = area.mid(parent.size()).chopped(1) + u"-index"_s;
    // What an earlier disc left when the program ended.
    Files().DeleteEntry(parent, name);
    Files().MakePrivateFolder(parent + name + u'/');
    return parent + name + u'/';
}

} // namespace

QString disc_index::Make(const QString& area, const DiscContent& content, const Patient& patient, const Kind& kind)
{
    QSet<QString> taken;
    for (const DiscFile& file : content.files)
        taken.insert(file.onDisc.section(u'/', 0, 0).toCaseFolded());
    const QString pages = FreeName(kind.isInterchange ? u"IHE_PDI"_s : u"INDEX"_s, QString(), taken);
    const Sorted sorted = SortFiles(content, file_origins::Of(area));

    disc_pages::Disc disc;
    disc.firstPage = FreeName(u"INDEX"_s, u".HTM"_s, taken);
    disc.folder = pages;
    disc.day = UseService<Desktop>().Today();
    disc.hasObjects = sorted.hasObjects;
    if (kind.isInterchange)
        disc.clinic = kind.clinic;
    QStringList pictures;
    QStringList smallNames;
    QHash<QString, QHash<QString, QString>> notes;
    for (const auto& [key, files] : sorted.visits) {
        const auto& [chart, ymd, isMovie, etc] = key;
        VisitPage visit;
        visit.chart = Trim(chart);
        visit.ymd = ymd;
        visit.section = etc;
        if (!Trim(chart).isEmpty() && Trim(chart) == Trim(patient.chart))
            visit.patient = Trim(patient.name);
        if (kind.hasNotes && !isMovie) {
            if (!notes.contains(chart))
                notes.insert(chart, NotesOf(chart));
            visit.note = notes[chart].value(ymd + etc);
        }
        visit.page = u"V%1.HTM"_s.arg(disc.visits.size() + 1, 4, 10, QChar(u'0'));
        for (const DiscFile& file : files) {
            Item item{file.onDisc, QFileInfo(NativePath(area + file.staged)).size(), {}};
            if (IsPicture(file.staged)) {
                item.small = u"P%1.JPG"_s.arg(pictures.size() + 1, 5, 10, QChar(u'0'));
                pictures << area + file.staged;
                smallNames << item.small;
            }
            visit.items.append(item);
        }
        disc.visits.append(visit);
    }
    for (const DiscFile& file : sorted.others)
        disc.others.append({file.onDisc, QFileInfo(NativePath(area + file.staged)).size(), {}});

    const std::optional<QList<QByteArray>> small = SmallPictures(pictures);
    if (!small)
        return {};
    for (VisitPage& visit : disc.visits) {
        for (Item& item : visit.items) {
            const qsizetype at = smallNames.indexOf(item.small);
            if (at >= 0 && small->at(at).isEmpty())
                item.small.clear();
        }
    }
    return filecalls::Ask([=] {
        QString folder = MadeFolder(area);
        const QString inner = folder + pages + u'/';
        Files().MakePrivateFolder(inner);
        Files().WriteWholeFile(folder + disc.firstPage, disc_pages::FirstPage(disc));
        Files().WriteWholeFile(folder + FreeName(u"README"_s, u".TXT"_s, taken), disc_pages::Readme(disc));
        for (const VisitPage& visit : disc.visits)
            Files().WriteWholeFile(inner + visit.page, disc_pages::PageOf(visit));
        for (qsizetype at = 0; at < small->size(); ++at) {
            if (!small->at(at).isEmpty())
                Files().WriteWholeFile(inner + smallNames[at], small->at(at));
        }
        return folder;
    });
}
