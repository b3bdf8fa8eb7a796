#include "platform/imaging/reader/known_pictures.h"

#include "platform/imaging/reader/MappedPicture.h"

#include <QImageReader>

#include <filesystem>
#include <sched.h>
#include <string>

namespace {

/// Qt scales on as many threads as there are processors, and a thread opens files when it starts. So there is one, and
/// it has started.
void StartScalingThread()
{
    cpu_set_t all;
    CPU_ZERO(&all);
    if (sched_getaffinity(0, sizeof all, &all) != 0)
        return;
    cpu_set_t one;
    CPU_ZERO(&one);
    for (size_t processor = 0; processor < CPU_SETSIZE && CPU_COUNT(&one) == 0; ++processor) {
        if (CPU_ISSET(processor, &all))
            CPU_SET(processor, &one);
    }
    sched_setaffinity(0, sizeof one, &one);
    const QImage large(1024, 1024, QImage::Format_RGB32);
    static_cast<void>(large.scaled(8, 8, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task"))
        sched_setaffinity(std::stoi(thread.path().filename()), sizeof all, &all);
}

} // namespace

void LoadKnownFormats()
{
    QImageReader::setAllocationLimit(0); // The process has a limit of its own.
    QImageReader::supportedImageFormats();
    StartScalingThread();
}

std::optional<KnownPicture> DecodeKnown(int descriptor, const picturecontent::Wish& wish)
{
    MappedPicture file(descriptor);
    if (!file.IsThere())
        return {};
    const std::optional<picturecontent::Header> header = picturecontent::HeaderOf(file.Device());
    if (!header)
        return {};
    return KnownPicture{*header, picturecontent::Decode(*header, file.Content(), wish)};
}
