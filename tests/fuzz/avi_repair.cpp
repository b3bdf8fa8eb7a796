#include "contracts/PlatformError.h"
#include "platform/gstreamer/movies/AviFile.h"
#include "station_files.h"

using namespace Qt::StringLiterals;

/// What a killed station left of a movie.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const StationFiles files;
    const QString partial = files.Path(u"partial"_s);
    const QString whole = files.Path(u"movie001.avi"_s);
    files.Write(u"partial"_s, ContentOf(data, size));
    try {
        AviFile::Repair(partial, whole);
    } catch (const PlatformError&) {
    }
    QFile::remove(partial);
    QFile::remove(whole);
    return 0;
}
