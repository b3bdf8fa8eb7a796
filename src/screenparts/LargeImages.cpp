#include "screenparts/LargeImages.h"

#include "contracts/files.h"
#include "contracts/pictures.h"
#include "frame/guard.h"
#include "frame/services.h"

#include <QPointer>

#include <mutex>

namespace {
/// Smaller ones are of no use to any screen.
constexpr int SmallestReducedWidth = 400;
constexpr int EndPatienceMs = 100;

LargeImages::Picture ReadPicture(const QString& path)
{
    LargeImages::Picture picture;
    try {
        picture.version = Files().VersionOf(path);
        const LargeImage large = Pictures().LoadToLook(path);
        picture.image = large.picture;
        picture.fileSize = large.fileSize;
        while (qint64(picture.image.width()) * picture.image.height() > LargeImages::LargestPixels) {
            if (picture.fileSize.isEmpty())
                picture.fileSize = picture.image.size();
            picture.image = picture.image.scaled(picture.image.size() / 2, Qt::IgnoreAspectRatio);
        }
    } catch (...) {
        picture.fault = guard::TextOf(std::current_exception());
    }
    return picture;
}

QList<QImage> ReducedFormsOf(const QImage& image)
{
    QList<QImage> reduced;
    for (QImage last = image; last.width() / 2 >= SmallestReducedWidth && last.height() > 1;) {
        last = last.scaled(last.size() / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        reduced << last;
    }
    return reduced;
}
} // namespace

/// What the threads ask before they begin.
struct LargeImages::Wanted
{
    std::mutex mutex;
    QStringList paths;

    bool Contains(const QString& path)
    {
        const std::lock_guard lock(mutex);
        return paths.contains(path);
    }
    void Set(const QStringList& wanted)
    {
        const std::lock_guard lock(mutex);
        paths = wanted;
    }
};

LargeImages::LargeImages() : m_wanted(std::make_shared<Wanted>()) {}

LargeImages::~LargeImages()
{
    m_wanted->Set({});
    m_files.End(EndPatienceMs);
    m_localFiles.End(EndPatienceMs);
}

void LargeImages::Want(const QList<Source>& sources)
{
    QList<Source> wanted;
    QStringList paths;
    for (const Source& source : sources) {
        if (!source.path.isEmpty() && !paths.contains(source.path) && paths.size() < Most) {
            wanted << source;
            paths << source.path;
        }
    }
    m_wanted->Set(paths);
    m_pictures.removeIf([&](auto picture) { return !paths.contains(picture.key()); });
    for (const Source& source : wanted) {
        if (!m_pictures.contains(source.path))
            Read(source);
    }
}

const LargeImages::Picture* LargeImages::Find(const QString& path) const
{
    const auto found = m_pictures.constFind(path);
    return found != m_pictures.cend() ? &*found : nullptr;
}

void LargeImages::Read(const Source& source)
{
    if (m_underWay.contains(source.path))
        return;
    m_underWay.insert(source.path);
    Thread(source).Post([self = QPointer(this), wanted = m_wanted, source] {
        const QString& path = source.path;
        if (!wanted->Contains(path)) {
            PostToScreen([self, source] {
                // It may have come to be wanted again meanwhile.
                if (self && self->m_underWay.remove(source.path) && self->m_wanted->Contains(source.path))
                    self->Read(source);
            });
            return;
        }
        const Picture picture = ReadPicture(path);
        PostToScreen([self, path, picture] {
            if (self)
                self->TakeRead(path, picture);
        });
    });
}

void LargeImages::Refine(const Source& source)
{
    const Picture* picture = Find(source.path);
    if (picture == nullptr || !picture->reduced.isEmpty() || picture->image.isNull())
        return;
    Thread(source).Post([self = QPointer(this), path = source.path, image = picture->image] {
        const QList<QImage> reduced = ReducedFormsOf(image);
        PostToScreen([self, path, reduced, key = image.cacheKey()] {
            if (!self || !self->m_pictures.contains(path) || self->m_pictures[path].image.cacheKey() != key)
                return;
            self->m_pictures[path].reduced = reduced;
            Q_EMIT self->Refined(path);
        });
    });
}

void LargeImages::TakeRead(const QString& path, const Picture& picture)
{
    m_underWay.remove(path);
    if (!m_wanted->Contains(path))
        return;
    m_pictures.insert(path, picture);
    Q_EMIT Ready(path);
}

void LargeImages::Check(const Source& source)
{
    const Picture* known = Find(source.path);
    if (known == nullptr)
        return;
    Thread(source).Post([self = QPointer(this), source, version = known->version] {
        const QString& path = source.path;
        const QByteArray now = Files().VersionOf(path);
        const QString folder = path.left(path.lastIndexOf(u'\\') + 1);
        const bool isGone = now.isEmpty() && FolderExists(folder) && Files().KindOf(path) == FileKind::None;
        if (now == version || (now.isEmpty() && !isGone))
            return;
        PostToScreen([self, source, isGone] {
            if (!self || !self->m_wanted->Contains(source.path))
                return;
            if (isGone)
                Q_EMIT self->Gone(source.path);
            else
                self->Read(source);
        });
    });
}
