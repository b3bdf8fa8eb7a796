#include "platform/gstreamer/stills/JpegEncoder.h"

#include "contracts/PlatformError.h"
#include "frame/guard.h"
#include "frame/WorkThread.h"
#include "platform/imaging/jpeg_segments.h"

#include <QThread>

#include <turbojpeg.h>

#include <algorithm>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace {
constexpr int MostStripes = 4;
constexpr int MostRestartInterval = 0xffff;

struct TurboDestroyer
{
    void operator()(void* handle) const { tjDestroy(handle); }
};

struct TurboFree
{
    void operator()(unsigned char* bytes) const { tjFree(bytes); }
};

struct Encoded
{
    std::unique_ptr<unsigned char, TurboFree> bytes;
    unsigned long size = 0;
};

/// Where the parts of an encoded file lie.
struct Layout
{
    unsigned long heightAt = 0; ///< Of the frame header's number of lines.
    unsigned long scanHeader = 0;
    unsigned long scanData = 0;
    unsigned long scanEnd = 0;
};

int Sampling(const YuvPlanes& planes)
{
    if (planes.ChromaAcross() == 0)
        return TJSAMP_GRAY;
    if (planes.ChromaAcross() == 1)
        return planes.ChromaDown() == 1 ? TJSAMP_444 : TJSAMP_440;
    return planes.ChromaDown() == 1 ? TJSAMP_422 : TJSAMP_420;
}

Encoded EncodeRows(const YuvPlanes& planes, int quality, int firstRow, int rows)
{
    const std::unique_ptr<void, TurboDestroyer> handle(tjInitCompress());
    const int sampling = Sampling(planes);
    const int down = std::max(planes.ChromaDown(), 1);
    const unsigned char* starts[3] = {};
    int strides[3] = {};
    for (int plane = 0; plane < (sampling == TJSAMP_GRAY ? 1 : 3); ++plane) {
        strides[plane] = planes.Stride(plane);
        const int row = plane == 0 ? firstRow : firstRow / down;
        starts[plane] = planes.Plane(plane) + std::ptrdiff_t(row) * strides[plane];
    }

    Encoded encoded;
    encoded.size = tjBufSize(planes.Width(), rows, sampling);
    encoded.bytes.reset(tjAlloc(int(encoded.size)));
    unsigned char* bytes = encoded.bytes.get();
    if (!handle || bytes == nullptr ||
        tjCompressFromYUVPlanes(handle.get(), starts, planes.Width(), strides, rows, sampling, &bytes, &encoded.size,
                                std::clamp(quality, 1, 100), TJFLAG_NOREALLOC) != 0)
        throw PlatformError(u"캡쳐 영상을 저장할 형식으로 바꿀수 없습니다.!!"_s);
    return encoded;
}

std::optional<Layout> Read(const Encoded& file)
{
    const std::span<const std::uint8_t> bytes(file.bytes.get(), file.size);
    Layout layout;
    for (auto segment = NextJpegSegment(bytes, FirstJpegSegment); segment;
         segment = NextJpegSegment(bytes, segment->end)) {
        if (segment->marker == JpegSegment::BaselineFrame)
            layout.heightAt = segment->begin + 5;
        if (segment->marker != JpegSegment::Scan)
            continue;
        layout.scanHeader = segment->begin;
        layout.scanData = segment->end;
        layout.scanEnd = file.size - 2;
        if (layout.heightAt == 0 || layout.scanData > layout.scanEnd)
            return std::nullopt;
        return layout;
    }
    return std::nullopt;
}

void AppendBigEndian(QByteArray& bytes, int value)
{
    bytes.append(char(value >> 8));
    bytes.append(char(value & 0xff));
}

/// True when both files have the same tables, so that one header serves the scans of both.
bool SharesTables(const Encoded& a, const Layout& layoutA, const Encoded& b, const Layout& layoutB)
{
    if (layoutA.heightAt != layoutB.heightAt || layoutA.scanData != layoutB.scanData)
        return false;
    const unsigned long afterHeight = layoutA.heightAt + 2;
    return std::equal(a.bytes.get(), a.bytes.get() + layoutA.heightAt, b.bytes.get()) &&
           std::equal(a.bytes.get() + afterHeight, a.bytes.get() + layoutA.scanData, b.bytes.get() + afterHeight);
}

/// One file from stripes that each hold `interval` coding units, the last one as many or fewer. Empty when the
/// stripes don't fit together.
QByteArray Join(const std::vector<Encoded>& stripes, int height, int interval)
{
    std::vector<Layout> layouts;
    qsizetype size = 16;
    for (const Encoded& stripe : stripes) {
        const std::optional<Layout> layout = Read(stripe);
        if (!layout || (!layouts.empty() && !SharesTables(stripes.front(), layouts.front(), stripe, *layout)))
            return {};
        layouts.push_back(*layout);
        size += qsizetype(stripe.size);
    }

    const auto text = [&](std::size_t stripe) { return reinterpret_cast<const char*>(stripes[stripe].bytes.get()); };
    const Layout& first = layouts.front();
    QByteArray joined;
    joined.reserve(size);
    joined.append(text(0), qsizetype(first.heightAt));
    AppendBigEndian(joined, height);
    joined.append(text(0) + first.heightAt + 2, qsizetype(first.scanHeader - first.heightAt - 2));
    AppendBigEndian(joined, 0xffdd); // Restart interval.
    AppendBigEndian(joined, 4);
    AppendBigEndian(joined, interval);
    joined.append(text(0) + first.scanHeader, qsizetype(first.scanData - first.scanHeader));
    for (std::size_t stripe = 0; stripe < stripes.size(); ++stripe) {
        if (stripe > 0)
            AppendBigEndian(joined, 0xffd0 + int(stripe - 1) % 8); // Restart marker.
        const Layout& layout = layouts[stripe];
        joined.append(text(stripe) + layout.scanData, qsizetype(layout.scanEnd - layout.scanData));
    }
    AppendBigEndian(joined, 0xffd9);
    return joined;
}
} // namespace

QByteArray EncodeJpeg(const YuvPlanes& planes, int quality)
{
    const int unitHeight = 8 * std::max(planes.ChromaDown(), 1);
    const int unitWidth = 8 * std::max(planes.ChromaAcross(), 1);
    const int unitRows = (planes.Height() + unitHeight - 1) / unitHeight;
    const int unitColumns = (planes.Width() + unitWidth - 1) / unitWidth;
    const int wanted = std::clamp(QThread::idealThreadCount(), 1, MostStripes);
    const int stripeRows = (unitRows + wanted - 1) / wanted;
    const int stripeCount = (unitRows + stripeRows - 1) / stripeRows;

    if (stripeCount > 1 && stripeRows * unitColumns <= MostRestartInterval) {
        const int stripeHeight = stripeRows * unitHeight;
        std::vector<Encoded> stripes(static_cast<size_t>(stripeCount));
        std::vector<std::exception_ptr> faults(stripes.size());
        const auto encode = [&](int stripe) {
            const int firstRow = stripe * stripeHeight;
            const int rows = std::min(stripeHeight, planes.Height() - firstRow);
            try {
                stripes[static_cast<size_t>(stripe)] = EncodeRows(planes, quality, firstRow, rows);
            } catch (...) {
                faults[static_cast<size_t>(stripe)] = std::current_exception();
            }
        };
        // They stay for the next still of this thread.
        thread_local std::vector<std::unique_ptr<WorkThread>> helpers;
        while (helpers.size() + 1 < stripes.size())
            helpers.push_back(std::make_unique<WorkThread>());
        for (int stripe = 1; stripe < stripeCount; ++stripe)
            helpers[static_cast<size_t>(stripe) - 1]->Post([&encode, stripe] { encode(stripe); });
        encode(0);
        for (const std::unique_ptr<WorkThread>& helper : helpers)
            helper->AwaitIdle();
        for (const std::exception_ptr& fault : faults)
            guard::Rethrow(fault);
        QByteArray joined = Join(stripes, planes.Height(), stripeRows * unitColumns);
        if (!joined.isEmpty())
            return joined;
    }
    const Encoded whole = EncodeRows(planes, quality, 0, planes.Height());
    return QByteArray(reinterpret_cast<const char*>(whole.bytes.get()), qsizetype(whole.size));
}
