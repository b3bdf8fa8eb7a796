#include "fuzz.h"
#include "platform/dicom/link/server_sets.h"
#include "platform/dicom/link_messages.h"

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcistrmb.h>
#include <dcmtk/dcmdata/dctk.h>
#include <dcmtk/oflog/oflog.h>

namespace {

/// As the library reads a data set that comes over an association.
bool Read(DcmDataset& set, const QByteArray& content, E_TransferSyntax syntax)
{
    DcmInputBufferStream stream;
    stream.setBuffer(content.constData(), content.size());
    stream.setEos();
    set.transferInit();
    const OFCondition read = set.read(stream, syntax, EGL_noChange);
    set.transferEnd();
    return read.good();
}

} // namespace

/// The program may have so much memory: the library gives up a data set that wants more.
extern "C" const char* __asan_default_options()
{
    return "max_allocation_size_mb=320";
}

/// What a server answers: matches, entries of a worklist, reports of storage commitment, remarks. The first byte says
/// how the data set is written.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool isSilent = (OFLog::configure(OFLogger::OFF_LOG_LEVEL), true);
    DcmDataset set;
    const E_TransferSyntax syntax =
        size > 0 && (data[0] & 1) != 0 ? EXS_LittleEndianExplicit : EXS_LittleEndianImplicit;
    if (!isSilent || !Read(set, ContentOf(data, size).mid(1), syntax))
        return 0;
    serversets::MatchOf(set, true);
    serversets::MatchOf(set, false);
    QCborMap report;
    serversets::PutReport(set, report);
    if (serversets::CommentOf(&set).size() > dicomlink::LongestText + 5 ||
        serversets::ElementsOf(set).size() > dicomlink::MostElements)
        __builtin_trap();
    return 0;
}
