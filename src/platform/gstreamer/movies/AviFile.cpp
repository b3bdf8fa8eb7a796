#include "platform/gstreamer/movies/AviFile.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"
#include "platform/files/posix_files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
constexpr int MostParts = 32;
constexpr quint32 SuperIndexSize = 24 + 16 * MostParts;
constexpr quint32 KeyFrame = 0x10;
/// So many frames are at most lost with the machine's power: five seconds.
constexpr int FramesPerSync = 90;

[[noreturn]] void ThrowFault(const QString& what, int error)
{
    throw PlatformError(u"%1 (%2)"_s.arg(what, posix_files::ErrorText(error)));
}

/// Little-endian fields of a chunk.
class Fields
{
public:
    Fields& Id(const char* id) { return Raw(QByteArray(id, 4)); }
    Fields& U16(quint32 value) { return Number(quint16(value)); }
    Fields& U32(quint64 value) { return Number(quint32(value)); }
    Fields& U64(quint64 value) { return Number(value); }
    Fields& Raw(const QByteArray& bytes)
    {
        m_bytes += bytes;
        return *this;
    }
    /// A chunk, padded to an even length.
    Fields& Chunk(const char* id, const QByteArray& data)
    {
        Id(id).U32(quint64(data.size())).Raw(data);
        return data.size() % 2 != 0 ? Raw(QByteArray(1, '\0')) : *this;
    }
    Fields& Zeros(qsizetype count) { return Raw(QByteArray(count, '\0')); }
    const QByteArray& Bytes() const { return m_bytes; }

private:
    template <class T>
    Fields& Number(T value)
    {
        const T little = qToLittleEndian(value);
        m_bytes.append(reinterpret_cast<const char*>(&little), sizeof little);
        return *this;
    }

    QByteArray m_bytes;
};

/// The name with the number behind its own; a name without one gets it.
QString NextName(const QString& path)
{
    const QFileInfo info(path);
    const QString base = info.completeBaseName();
    const QString digits = base.right(3);
    bool isNumber = false;
    const int number = digits.toInt(&isNumber);
    const QString stem = isNumber && number < 999 ? base.chopped(digits.size()) : base;
    const QString next = u"%1/%2%3.%4"_s.arg(
        info.path(), stem, QString::number((stem == base ? 0 : number) + 1).rightJustified(3, u'0'), info.suffix());
    return next;
}

quint32 U32At(const QByteArray& bytes, qsizetype at)
{
    return qFromLittleEndian<quint32>(bytes.constData() + at);
}
} // namespace

AviFile::AviFile(const QString& nativePath, const Format& format) : m_path(nativePath), m_format(format)
{
    const QFileInfo info(nativePath);
    m_partial = u"%1/.%2.%3.part"_s.arg(info.path(), info.fileName(), Files().ProcessMark());
    // The name is this process's own: what stands there was left by an earlier try, or isn't ours to write into.
    unlink(QFile::encodeName(m_partial).constData());
    Open(O_RDWR | O_CREAT | O_EXCL);
    const QByteArray header = Header();
    Write(0, header);
    m_end = header.size();
}

AviFile::AviFile(const QString& partialPath, const QString& nativePath) : m_path(nativePath), m_partial(partialPath)
{
    Open(O_RDWR);
}

AviFile::~AviFile()
{
    if (m_fd >= 0)
        close(m_fd);
}

AviFile::Partial AviFile::ReadPartialName(const QString& fileName)
{
    static const QRegularExpression form(uR"(^\.(.+)\.([^.]+\.[^.]+\.[^.]+\.[^.]+)\.part$)"_s);
    const QRegularExpressionMatch match = form.match(fileName);
    return {match.captured(1), match.hasMatch() && Files().HolderOf(match.captured(2)) == Holder::Dead};
}

void AviFile::Open(int flags)
{
    m_fd = open(QFile::encodeName(m_partial).constData(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
    if (m_fd < 0)
        ThrowFault(u"동영상 파일을 만들수 없습니다.!!"_s, errno);
}

void AviFile::Write(qint64 at, const QByteArray& bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t written = pwrite(m_fd, bytes.constData() + done, size_t(bytes.size() - done), at + done);
        if (written > 0)
            done += written;
        else if (written == 0 || errno != EINTR)
            ThrowFault(u"동영상 파일에 쓸수 없습니다.!!"_s, written == 0 ? ENOSPC : errno);
    }
}

qint64 AviFile::HeaderSize() const
{
    return Header().size();
}

/// Where the list of the present part's chunks has its name, from which its index counts.
qint64 AviFile::MoviAt() const
{
    return m_riffAt == 0 ? HeaderSize() - 4 : m_riffAt + 20;
}

QByteArray AviFile::StreamHeader(bool isSound) const
{
    Fields strh;
    Fields strf;
    if (isSound) {
        strh.Id("auds").U32(0).U32(0).U32(0).U32(0).U32(1).U32(SampleRate).U32(0).U32(quint64(m_soundBytes / 2));
        strh.U32(SampleRate).U32(0xffffffff).U32(2).U64(0);
        strf.U16(1).U16(1).U32(SampleRate).U32(SampleRate * 2).U16(2).U16(16);
    } else {
        strh.Id("vids").Id("MJPG").U32(0).U32(0).U32(0).U32(1).U32(quint64(m_format.framesPerSecond)).U32(0);
        strh.U32(quint64(m_frames)).U32(m_largest).U32(0xffffffff).U32(0);
        strh.U16(0).U16(0).U16(quint32(m_format.width)).U16(quint32(m_format.height));
        strf.U32(40).U32(quint64(m_format.width)).U32(quint64(m_format.height)).U16(1).U16(24).Id("MJPG");
        strf.U32(quint64(m_format.width) * quint64(m_format.height) * 3).Zeros(16);
    }
    const std::vector<IndexPlace>& indexes = m_indexes[isSound ? 1 : 0];
    Fields indx;
    indx.U16(4).U16(0).U32(indexes.size()).Id(isSound ? "01wb" : "00dc").Zeros(12);
    for (const IndexPlace& index : indexes)
        indx.U64(quint64(index.at)).U32(index.size).U32(index.duration);
    indx.Zeros(SuperIndexSize - indx.Bytes().size());
    return Fields().Chunk("strh", strh.Bytes()).Chunk("strf", strf.Bytes()).Chunk("indx", indx.Bytes()).Bytes();
}

QByteArray AviFile::Header() const
{
    const auto list = [](const char* name, const QByteArray& content) {
        return Fields().Chunk("LIST", Fields().Id(name).Raw(content).Bytes()).Bytes();
    };
    constexpr quint32 HasIndex = 0x10;
    constexpr quint32 IsInterleaved = 0x100;
    const auto fps = quint64(m_format.framesPerSecond);
    Fields avih;
    avih.U32(1000000 / fps).U32((m_largest + SampleRate * 2 / fps) * fps).U32(0).U32(HasIndex | IsInterleaved);
    avih.U32(quint64(m_framesOfFirstPart)).U32(0).U32(m_format.sound ? 2 : 1).U32(m_largest);
    avih.U32(quint64(m_format.width)).U32(quint64(m_format.height)).Zeros(16);
    QByteArray streams = list("strl", StreamHeader(false));
    if (m_format.sound)
        streams += list("strl", StreamHeader(true));
    const QByteArray odml = list("odml", Fields().Chunk("dmlh", Fields().U32(quint64(m_frames)).Bytes()).Bytes());
    const QByteArray hdrl = list("hdrl", Fields().Chunk("avih", avih.Bytes()).Bytes() + streams + odml);
    // The two sizes are filled in when the part is closed.
    return Fields().Id("RIFF").U32(0).Id("AVI ").Raw(hdrl).Id("LIST").U32(0).Id("movi").Bytes();
}

void AviFile::Append(const QByteArray& jpeg, const QByteArray& samples)
{
    if (m_end - m_riffAt > m_format.partBytes && m_indexes[0].size() + 1 < MostParts)
        BeginPart();
    Fields chunks;
    chunks.Chunk("00dc", jpeg);
    const qint64 soundAt = m_end + chunks.Bytes().size();
    if (m_format.sound)
        chunks.Chunk("01wb", samples);
    Write(m_end, chunks.Bytes());
    m_chunks.push_back({m_end, quint32(jpeg.size()), false});
    if (m_format.sound) {
        m_chunks.push_back({soundAt, quint32(samples.size()), true});
        m_soundBytes += samples.size();
    }
    m_end += chunks.Bytes().size();
    m_largest = qMax(m_largest, quint32(jpeg.size()));
    if (++m_frames % FramesPerSync == 0)
        Sync();
}

void AviFile::DropTail(int frames)
{
    while (frames > 0 && !m_chunks.empty() && !m_isPartClosed) {
        const Chunk last = m_chunks.back();
        m_chunks.pop_back();
        m_end = last.at;
        if (last.isSound) {
            m_soundBytes -= last.size;
        } else {
            --m_frames;
            --frames;
        }
    }
    if (ftruncate(m_fd, m_end) != 0)
        ThrowFault(u"동영상 파일에 쓸수 없습니다.!!"_s, errno);
}

void AviFile::BeginPart()
{
    ClosePart();
    Write(m_end, Fields().Id("RIFF").U32(0).Id("AVIX").Id("LIST").U32(0).Id("movi").Bytes());
    m_riffAt = m_end;
    m_end += 24;
    m_chunks.clear();
    m_isPartClosed = false;
}

QByteArray AviFile::PartIndex(bool isSound) const
{
    const qint64 moviAt = MoviAt();
    Fields entries;
    quint32 count = 0;
    for (const Chunk& chunk : m_chunks) {
        if (chunk.isSound != isSound)
            continue;
        entries.U32(quint64(chunk.at + 8 - moviAt)).U32(chunk.size);
        ++count;
    }
    Fields index;
    index.U16(2).Raw(QByteArray("\0\1", 2)).U32(count).Id(isSound ? "01wb" : "00dc").U64(quint64(moviAt)).U32(0);
    index.Raw(entries.Bytes());
    return Fields().Chunk(isSound ? "ix01" : "ix00", index.Bytes()).Bytes();
}

void AviFile::ClosePart()
{
    if (m_isPartClosed)
        return;
    const qint64 moviAt = MoviAt();
    const QByteArray video = PartIndex(false);
    const QByteArray sound = m_format.sound ? PartIndex(true) : QByteArray();
    const qint64 moviEnd = m_end + video.size() + sound.size();
    QByteArray tail = video + sound;
    quint32 frames = 0;
    quint32 soundBytes = 0;
    Fields old;
    for (const Chunk& chunk : m_chunks) {
        old.Id(chunk.isSound ? "01wb" : "00dc").U32(KeyFrame).U32(quint64(chunk.at - moviAt)).U32(chunk.size);
        frames += chunk.isSound ? 0 : 1;
        soundBytes += chunk.isSound ? chunk.size : 0;
    }
    if (m_riffAt == 0)
        tail += Fields().Chunk("idx1", old.Bytes()).Bytes();
    Write(m_end, tail);
    const qint64 end = m_end + tail.size();
    Write(m_riffAt + 4, Fields().U32(quint64(end - m_riffAt - 8)).Bytes());
    Write(moviAt - 4, Fields().U32(quint64(moviEnd - moviAt)).Bytes());
    m_indexes[0].push_back({m_end, quint32(video.size()), frames});
    if (m_format.sound)
        m_indexes[1].push_back({m_end + video.size(), quint32(sound.size()), soundBytes / 2});
    if (m_riffAt == 0)
        m_framesOfFirstPart = int(frames);
    m_end = end;
    m_isPartClosed = true;
}

void AviFile::Sync()
{
    if (fdatasync(m_fd) != 0)
        ThrowFault(u"동영상 파일에 쓸수 없습니다.!!"_s, errno);
}

void AviFile::Complete()
{
    if (m_frames == 0) {
        unlink(QFile::encodeName(m_partial).constData());
        return;
    }
    ClosePart();
    // All but the sizes at both ends, which are known by now.
    const QByteArray header = Header();
    Write(8, header.mid(8, header.size() - 16));
    if (ftruncate(m_fd, m_end) != 0 || fsync(m_fd) != 0)
        ThrowFault(u"동영상 파일에 쓸수 없습니다.!!"_s, errno);
    // No name is taken from another file.
    while (!Files().PlaceNewFile(m_partial, m_path))
        m_path = NextName(m_path);
}

void AviFile::ReadFormat()
{
    QByteArray head(144, '\0');
    if (pread(m_fd, head.data(), size_t(head.size()), 0) != head.size() || !head.startsWith("RIFF") ||
        head.mid(112, 4) != "MJPG")
        throw PlatformError(u"동영상 파일이 아닙니다.!!"_s);
    m_format.sound = U32At(head, 56) == 2;
    m_format.width = int(U32At(head, 64));
    m_format.height = int(U32At(head, 68));
    m_format.framesPerSecond = qBound(1, int(U32At(head, 132)), 120);
}

void AviFile::ScanChunks()
{
    struct stat status = {};
    if (fstat(m_fd, &status) != 0)
        ThrowFault(u"동영상 파일을 읽을수 없습니다.!!"_s, errno);
    qint64 at = HeaderSize();
    m_end = at;
    while (true) {
        QByteArray head(24, '\0');
        const ssize_t got = pread(m_fd, head.data(), size_t(head.size()), at);
        if (got < 8)
            break;
        const QByteArray id = head.left(4);
        const quint32 size = U32At(head, 4);
        const qint64 next = at + 8 + size + size % 2;
        if (id == "RIFF" && got == 24 && head.mid(20, 4) == "movi") {
            // The parts before this one were closed; their index stands before it.
            m_isPartClosed = false;
            ClosePart();
            m_end = at + 24;
            m_riffAt = at;
            m_chunks.clear();
            m_isPartClosed = false;
            at = m_end;
            continue;
        }
        const bool isSound = id == "01wb";
        if ((id != "00dc" && !isSound && id != "ix00" && id != "ix01" && id != "idx1") || next > status.st_size)
            break;
        if (id == "00dc" || isSound) {
            // Sound without its picture, or a picture without its sound before it, is where the writing broke off.
            const bool awaitsSound = m_format.sound && !m_chunks.empty() && !m_chunks.back().isSound;
            if (isSound != awaitsSound)
                break;
            m_chunks.push_back({at, size, isSound});
            m_frames += isSound ? 0 : 1;
            m_soundBytes += isSound ? size : 0;
            m_largest = qMax(m_largest, isSound ? 0 : size);
            m_end = next;
        }
        at = next;
    }
    if (m_format.sound && !m_chunks.empty() && !m_chunks.back().isSound)
        DropTail(1);
}

void AviFile::Repair(const QString& partialPath, const QString& nativePath)
{
    AviFile file(partialPath, nativePath);
    file.ReadFormat();
    file.ScanChunks();
    file.Complete();
}
