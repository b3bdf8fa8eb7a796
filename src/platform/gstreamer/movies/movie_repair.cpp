#include "platform/gstreamer/movies/movie_repair.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/journal.h"
#include "platform/gstreamer/movies/AviFile.h"

#include <QDir>

using namespace Qt::StringLiterals;

void RepairMovies(const QString& folder)
{
    const QDir native(NativePath(folder));
    for (const QString& name : native.entryList({u".*.part"_s}, QDir::Files | QDir::Hidden)) {
        const AviFile::Partial partial = AviFile::ReadPartialName(name);
        if (!partial.isAbandoned || !IsPathPart(partial.name))
            continue;
        try {
            AviFile::Repair(native.filePath(name), native.filePath(partial.name));
            journal::Note(Journal::Information, u"끝나지 않은 동영상을 온전한 파일로 바꿈: %1"_s.arg(partial.name));
        } catch (const PlatformError& error) {
            // It stays as it is, for the next start.
            journal::NoteFault(error.Text());
        }
    }
}
