#include "filing/PictureJournal.h"
#include "platform/sql/register_sql.h"
#include "station_files.h"

using namespace Qt::StringLiterals;

/// The journal of another user, who may have put anything there.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const StationFiles files;
    static const bool isReady = (RegisterSql(), true);
    files.Write(u"Pictures-1.1.1.1.journal"_s, ContentOf(data, size));
    if (isReady)
        PictureJournal::In(files.Path({}));
    return 0;
}
