#include "platform/imaging/confined_reader.h"

#include "frame/own_program.h"
#include "platform/imaging/pixel_stream.h"
#include "platform/process/child_process.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>

#include <csignal>
#include <sys/mman.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using confinedreader::Answer;
using confinedreader::Outcome;
using confinedreader::Upright;

namespace {

/// A process that has closed its output is about to end.
constexpr int EndPatienceMs = 200;
/// Of a turned JPEG: whoever asks has no use for a larger one.
constexpr std::uint32_t MostTurned = 64 << 20;

/// How soon a stop is noticed.
constexpr qint64 LookMs = 100;

/// How long the process is waited for.
struct Patience
{
    QDeadlineTimer deadline{picturelimits::LongestWaitMs};
    std::stop_token stop;

    bool HasEnded() const { return deadline.hasExpired() || stop.stop_requested(); }
};

/// Fills `target` from the process. False when it ends, or the patience does, before that.
bool ReadExactly(QProcess& process, void* target, qint64 bytes, const Patience& patience)
{
    auto* at = static_cast<char*>(target);
    while (bytes > 0) {
        const qint64 got = process.read(at, bytes);
        if (got < 0)
            return false;
        at += got;
        bytes -= got;
        if (bytes == 0 || got > 0)
            continue;
        const qint64 ms = qMin(patience.deadline.remainingTime(), patience.stop.stop_possible() ? LookMs : INT_MAX);
        if (!process.waitForReadyRead(static_cast<int>(ms)) &&
            (patience.HasEnded() || process.state() != QProcess::Running))
            return false;
    }
    return true;
}

QImage::Format FormatOf(std::uint32_t content)
{
    switch (content) {
    case PixelStreamHeader::Opaque:
        return QImage::Format_RGB32;
    case PixelStreamHeader::Alpha:
        return QImage::Format_ARGB32;
    case PixelStreamHeader::PremultipliedAlpha:
        return QImage::Format_ARGB32_Premultiplied;
    default:
        return QImage::Format_Invalid;
    }
}

QSize SizeOf(std::uint32_t width, std::uint32_t height)
{
    constexpr std::uint32_t Most = 0x7FFFFFFF;
    return QSize(static_cast<int>(width & Most), static_cast<int>(height & Most));
}

Answer ReadAnswer(QProcess& process, const Patience& patience)
{
    PixelStreamHeader header;
    if (!ReadExactly(process, &header, sizeof header, patience) || header.mark != PixelStreamHeader::Mark)
        return {};
    if (header.content == PixelStreamHeader::Unconfinable)
        return {Outcome::Unconfinable, {}, false, {}};
    if (header.width == 0 || header.height == 0)
        return {};
    const QSize size = SizeOf(header.width, header.height);
    if (header.content == PixelStreamHeader::TooLarge || header.content == PixelStreamHeader::TooLargeJpeg) {
        const bool isJpeg = header.content == PixelStreamHeader::TooLargeJpeg;
        return {isJpeg ? Outcome::TooLargeJpeg : Outcome::TooLarge, {}, false, size};
    }
    const QImage::Format format = FormatOf(header.content);
    if (format == QImage::Format_Invalid || header.width > picturelimits::LargestPicture / header.height)
        return {};
    QImage picture(size, format);
    // The rows of 32-bit pixels lie one behind the other.
    if (picture.isNull() || !ReadExactly(process, picture.bits(), picture.sizeInBytes(), patience))
        return {};
    return {Outcome::Read, picture, header.cut != 0, SizeOf(header.wholeWidth, header.wholeHeight)};
}

Upright ReadUpright(QProcess& process, const Patience& patience)
{
    PixelStreamHeader header;
    if (!ReadExactly(process, &header, sizeof header, patience) || header.mark != PixelStreamHeader::Mark)
        return {};
    const QSize size = SizeOf(header.width, header.height);
    if (header.content == PixelStreamHeader::TooLargeJpeg)
        return {Outcome::TooLargeJpeg, {}, false, size};
    if (header.content != PixelStreamHeader::Turned || header.bytes > MostTurned)
        return {};
    QByteArray turned(header.bytes, Qt::Uninitialized);
    if (!ReadExactly(process, turned.data(), turned.size(), patience))
        return {};
    return {Outcome::Read, turned, header.cut != 0, size};
}

template <typename Result>
Result Run(int descriptor, const QStringList& arguments, const std::stop_token& stop,
           Result (*read)(QProcess&, const Patience&))
{
    const QString program = confinedreader::ReaderProgram();
    if (program.isEmpty() || lseek(descriptor, 0, SEEK_SET) != 0)
        return {};
    const Patience patience{.stop = stop};
    QProcess process;
    // It limits itself, also in what it runs.
    PrepareChild(process, NoMemoryLimit, descriptor);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setProcessEnvironment(QProcessEnvironment());
    process.start(program, arguments);
    Result answer;
    if (process.waitForStarted(picturelimits::LongestWaitMs))
        answer = read(process, patience);
    if (answer.outcome == Outcome::Unreadable && stop.stop_requested()) {
        answer.outcome = Outcome::Stopped;
    } else if (answer.outcome == Outcome::Unreadable) {
        process.waitForFinished(EndPatienceMs);
        const bool isOutOfTime = process.exitStatus() == QProcess::CrashExit && process.exitCode() == SIGXCPU;
        if (isOutOfTime || patience.deadline.hasExpired())
            answer.outcome = Outcome::TooSlow;
    }
    KillChild(process);
    process.waitForFinished();
    return answer;
}

} // namespace

QString confinedreader::ReaderProgram()
{
    return OwnProgram(u"capture-station-reader"_s);
}

Answer confinedreader::ReadKnown(int descriptor, const picturecontent::Wish& wish, const std::stop_token& stop)
{
    return Run(descriptor,
               {QString::number(static_cast<int>(wish.fit)), QString::number(wish.room.width()),
                QString::number(wish.room.height())},
               stop, &ReadAnswer);
}

Answer confinedreader::ReadForeign(int descriptor)
{
    return Run(descriptor, {}, {}, &ReadAnswer);
}

confinedreader::Upright confinedreader::TurnUpright(int descriptor, const std::stop_token& stop)
{
    return Run(descriptor, {u"upright"_s}, stop, &ReadUpright);
}

bool confinedreader::OpenMemory(QFile& file, const QByteArray& content)
{
    const int handle = memfd_create("picture", MFD_CLOEXEC);
    if (handle < 0)
        return false;
    if (!file.open(handle, QIODevice::ReadWrite, QFileDevice::AutoCloseHandle)) {
        close(handle);
        return false;
    }
    return file.write(content) == content.size() && file.flush();
}
