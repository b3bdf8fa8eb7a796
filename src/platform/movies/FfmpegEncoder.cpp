#include "platform/movies/FfmpegEncoder.h"

#include "contracts/files.h"
#include "frame/components.h"
#include "frame/services.h"
#include "platform/movies/register_movies.h"
#include "platform/process/child_process.h"

#include <QHash>
#include <QScopeGuard>
#include <QThread>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// An object's value may be so long, and its other elements need some of it.
constexpr qint64 MostBytes = (qint64(2) << 30) - (qint64(1) << 20);
/// What stays free on this machine's disk.
constexpr qint64 RoomBytes = qint64(256) << 20;
constexpr qint64 MemoryBytes = qint64(1) << 30;
constexpr int TotalMs = 60 * 60 * 1000;
constexpr qsizetype MostReason = 200;

/// By a name that is no other protocol's, and no option.
QString AsInput(const QString& path)
{
    return u"file:"_s + NativePath(path);
}

QStringList Arguments(const QString& source, const QString& target, bool hasSound)
{
    const QString threads = QString::number(std::max(1, QThread::idealThreadCount() / 2));
    QStringList arguments{u"-n"_s,
                          u"15"_s,
                          ProgramPath(u"ffmpeg"_s),
                          u"-nostdin"_s,
                          u"-hide_banner"_s,
                          u"-loglevel"_s,
                          u"error"_s,
                          u"-progress"_s,
                          u"pipe:1"_s,
                          u"-y"_s,
                          u"-protocol_whitelist"_s,
                          u"file"_s,
                          u"-i"_s,
                          AsInput(source),
                          u"-map"_s,
                          u"0:v:0"_s};
    if (hasSound)
        arguments << u"-map"_s << u"0:a:0?"_s << u"-c:a"_s << u"aac"_s << u"-b:a"_s << u"128k"_s;
    // The coding knows no odd sizes.
    return arguments << u"-c:v"_s << u"libx264"_s << u"-profile:v"_s << u"high"_s << u"-level:v"_s << u"4.1"_s
                     << u"-pix_fmt"_s << u"yuv420p"_s << u"-vf"_s << u"pad=ceil(iw/2)*2:ceil(ih/2)*2"_s
                     << u"-fps_mode"_s << u"cfr"_s << u"-preset"_s << u"fast"_s << u"-crf"_s << u"18"_s << u"-maxrate"_s
                     << u"20M"_s << u"-bufsize"_s << u"20M"_s << u"-threads"_s << threads << u"-map_metadata"_s
                     << u"-1"_s << u"-movflags"_s << u"+faststart"_s << u"-f"_s << u"mp4"_s << AsInput(target);
}

/// What the program has to say last, on one line.
QString LastWords(const ChildResult& result)
{
    const QStringList lines = LinesOf(result.errors);
    return lines.isEmpty() ? QString() : lines.last().simplified().left(MostReason);
}

EncodedMovie FactsOf(const QString& path, const std::stop_token& stop)
{
    const ChildResult result = RunChild(u"ffprobe"_s,
                                        {u"-v"_s, u"error"_s, u"-select_streams"_s, u"v:0"_s, u"-show_entries"_s,
                                         u"stream=width,height,nb_frames,r_frame_rate"_s, u"-of"_s,
                                         u"default=noprint_wrappers=1"_s, AsInput(path)},
                                        {}, {}, stop);
    QHash<QString, QString> values;
    for (const QString& line : LinesOf(result.output))
        values.insert(line.section(u'=', 0, 0).trimmed(), line.section(u'=', 1).trimmed());
    const QString rate = values.value(u"r_frame_rate"_s);
    const double number = rate.section(u'/', 0, 0).toDouble();
    const double per = std::max(1.0, rate.section(u'/', 1).toDouble());
    EncodedMovie facts{values.value(u"width"_s).toInt(), values.value(u"height"_s).toInt(),
                       values.value(u"nb_frames"_s).toInt(), number > 0 ? 1000.0 * per / number : 0};
    if (facts.columns <= 0 || facts.rows <= 0 || facts.frames <= 0 || facts.frameMs <= 0)
        throw MovieUnusable(u"동영상에 그림이 없습니다.!!"_s);
    return facts;
}

} // namespace

EncodedMovie FfmpegEncoder::Encode(const QString& source, const QString& target, bool hasSound,
                                   const std::stop_token& stop)
{
    if (ProgramPath(u"ffmpeg"_s).isEmpty() || ProgramPath(u"ffprobe"_s).isEmpty())
        throw MovieUnusable(u"ffmpeg이(가) 설치되어 있지 않아 동영상을 PACS로 보낼 수 없습니다.!!"_s);
    const QString folder = target.left(target.lastIndexOf(u'\\') + 1);
    const qint64 room = Files().FreeBytes(folder);
    if (room >= 0 && room < RoomBytes)
        throw PlatformError(u"이 컴퓨터의 남은 공간이 부족하여 동영상을 바꿀 수 없습니다.!!"_s);
    const QString partial = Files().PartialPath(folder);
    const auto clear = qScopeGuard([&partial] {
        try {
            DeleteFile(partial);
        } catch (const PlatformError&) {
            // It goes as what was left half-written.
        }
    });
    const QByteArray version = Files().VersionOf(source);
    const ChildLimits limits{.memoryBytes = MemoryBytes, .outputBytes = qint64(16) << 20, .totalMs = TotalMs};
    const ChildResult result = RunChild(u"nice"_s, Arguments(source, partial, hasSound), {}, limits, stop);
    if (stop.stop_requested())
        throw PlatformError(u"동영상을 바꾸다가 그만두었습니다.!!"_s);
    if (!result.fault.isEmpty())
        throw PlatformError(result.fault);
    // A share that has gone, or a later movie, isn't the movie's fault.
    if (version.isEmpty() || Files().VersionOf(source) != version)
        throw PlatformError(u"동영상 파일이 바뀌거나 읽히지 않습니다.!!"_s);
    const bool isFull = Files().FreeBytes(folder) < RoomBytes / 16 || result.errors.contains("No space left");
    if (!result.succeeded && isFull)
        throw PlatformError(u"이 컴퓨터의 남은 공간이 부족하여 동영상을 바꿀 수 없습니다.!!"_s);
    if (!result.succeeded)
        throw MovieUnusable(u"동영상을 바꿀 수 없습니다.!! "_s + LastWords(result));
    const EncodedMovie facts = FactsOf(partial, stop);
    if (!Files().ReadArchivedPiece(partial, MostBytes, 1).isEmpty())
        throw MovieUnusable(u"동영상이 너무 커서 PACS로 보낼 수 없습니다.!!"_s);
    DeleteFile(target);
    Files().PlaceNewFile(partial, target);
    return facts;
}

void RegisterMovies()
{
    InstallService<MovieEncoder>(std::make_unique<FfmpegEncoder>());
}
