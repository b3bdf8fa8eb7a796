#include "fuzz.h"
#include "platform/dicom/jpeg_frame.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const JpegFrame frame = ReadJpegFrame(ContentOf(data, size));
    if (frame.problem.isEmpty() && (frame.rows <= 0 || frame.columns <= 0))
        __builtin_trap();
    return 0;
}
