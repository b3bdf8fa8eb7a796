#include "platform/imaging/foreign_picture.h"

#include "platform/imaging/pixel_stream.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <cstring>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 BaseTimeMs = 1600;
/// Decoding takes longer the more there is to decode: a bomb is small.
constexpr qint64 TimeMsPerMegabyte = 400;
constexpr qint64 LongestTimeMs = 10000;

/// Beside the program in its build folder, or under the prefix that both were installed to.
QString ReaderProgram()
{
    QDir folder(QCoreApplication::applicationDirPath());
    for (int level = 0; level < 4; ++level) {
        const QString program = folder.filePath(u"libexec/capture-station-reader"_s);
        if (QFileInfo(program).isExecutable())
            return program;
        if (!folder.cdUp())
            break;
    }
    return {};
}

/// Fills `target` from the process. False when it ends, or the time runs out, before that.
bool ReadExactly(QProcess& process, void* target, qint64 bytes, const QDeadlineTimer& deadline)
{
    auto* at = static_cast<char*>(target);
    while (bytes > 0) {
        const qint64 got = process.read(at, bytes);
        if (got < 0)
            return false;
        at += got;
        bytes -= got;
        if (bytes > 0 && got == 0 && !process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            return false;
    }
    return true;
}

QImage ReadPixels(QProcess& process, const QDeadlineTimer& deadline)
{
    PixelStreamHeader header;
    if (!ReadExactly(process, &header, sizeof header, deadline) || header.mark != PixelStreamHeader::Mark ||
        header.width == 0 || header.height == 0 || header.width > LargestForeignPicture / header.height)
        return {};
    QImage picture(static_cast<int>(header.width), static_cast<int>(header.height),
                   header.hasAlpha != 0 ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    // The rows of 32-bit pixels lie one behind the other.
    if (picture.isNull() || !ReadExactly(process, picture.bits(), picture.sizeInBytes(), deadline))
        return {};
    return picture;
}

} // namespace

QImage foreignpicture::Read(int descriptor, qint64 fileBytes)
{
    const QString program = ReaderProgram();
    if (program.isEmpty() || lseek(descriptor, 0, SEEK_SET) != 0)
        return {};
    const qint64 timeMs = qMin(LongestTimeMs, BaseTimeMs + fileBytes / (1024 * 1024) * TimeMsPerMegabyte);
    const QDeadlineTimer deadline(timeMs);
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setProcessEnvironment(QProcessEnvironment());
    process.setChildProcessModifier([descriptor] { dup2(descriptor, STDIN_FILENO); });
    process.start(program, QStringList());
    QImage picture;
    if (process.waitForStarted(static_cast<int>(timeMs)))
        picture = ReadPixels(process, deadline);
    process.kill();
    process.waitForFinished();
    return picture;
}
