#include "pacs/handed_files.h"

#include "contracts/files.h"
#include "filing/capture_folders.h"
#include "frame/services.h"
#include "visit/Visit.h"

using namespace Qt::StringLiterals;

namespace {

const QString Report = u"PacsReport-"_s;
const QString Movie = u"PacsMovie-"_s;

QString ReportName(const QString& id)
{
    return Report + CheckedPathPart(id) + u".pdf"_s;
}

QString MovieName(const QString& id)
{
    return Movie + CheckedPathPart(id) + u".mp4"_s;
}

} // namespace

QString handed_files::ReportPath(const QString& id)
{
    return LocalFolder() + ReportName(id);
}

QString handed_files::MoviePath(const QString& id)
{
    return LocalFolder() + MovieName(id);
}

QString handed_files::LiveLockPath()
{
    return LocalFolder() + u"Live.lock"_s;
}

void handed_files::Remove(const QString& id)
{
    Remove(id, LocalFolder());
}

void handed_files::Remove(const QString& id, const QString& folder)
{
    DeleteFile(folder + ReportName(id));
    DeleteFile(folder + MovieName(id));
}

void handed_files::RemoveAllBut(const QStringList& ids)
{
    const QString folder = LocalFolder();
    Files().RemoveLeftovers(folder);
    for (const QString& prefix : {Report, Movie}) {
        for (const QString& name : Files().FilesStartingWith(folder, prefix)) {
            const QString id = name.sliced(prefix.size()).section(u'.', 0, 0);
            // One that was just written is about to be told of.
            if (!ids.contains(id) && Files().AgeMs(folder + name) > AbandonedMs)
                DeleteFile(folder + name);
        }
    }
}
