#include "platform/imaging/picture_file.h"

#include "contracts/files.h"
#include "contracts/pictures.h"
#include "platform/imaging/confined_reader.h"

#include <QBuffer>
#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using confinedreader::Answer;
using confinedreader::Outcome;
using picturecontent::Header;
using picturefile::Result;
using picturefile::Wish;

namespace {
/// Largest file that is read at all.
constexpr qint64 LargestFile = qint64(256) * 1024 * 1024;

Result Fault(const QString& text)
{
    return {.fault = text};
}

Result TooLarge(QSize size, bool jpeg)
{
    return Fault(u"그림이 너무 큽니다.!! (%1 x %2, 한도 %3메가픽셀)"_s.arg(size.width())
                     .arg(size.height())
                     .arg(jpeg ? picturelimits::LargestJpegMegapixels : picturelimits::LargestMegapixels));
}

Result ResultOf(const Answer& answer)
{
    switch (answer.outcome) {
    case Outcome::Read:
        return {.picture = answer.picture, .cut = answer.cut, .size = answer.size};
    case Outcome::TooLarge:
    case Outcome::TooLargeJpeg:
        return TooLarge(answer.size, answer.outcome == Outcome::TooLargeJpeg);
    case Outcome::TooSlow:
        return Fault(u"그림파일을 읽는 데 시간이 너무 오래 걸립니다.!! (한도 %1초)"_s.arg(
            picturelimits::LongestDecodingMs / 1000));
    case Outcome::Unconfinable:
        return Fault(
            u"이 컴퓨터에서는 이 형식의 그림파일을 안전하게 읽을 수 없습니다.!! JPEG으로 바꾸어 가져오십시오.!!"_s);
    case Outcome::Stopped:
    case Outcome::Unreadable:
        break;
    }
    return Fault(picturefile::UnreadableText());
}

/// Opens a regular file to be read. A pipe would keep the opener waiting for its other end. `links` is 0, or O_NOFOLLOW
/// for a file of the archive.
bool OpenRegular(QFile& file, const QString& path, int links)
{
    const int handle = open(QFile::encodeName(NativePath(path)).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | links);
    if (handle < 0)
        return false;
    struct stat facts = {};
    if (fstat(handle, &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_size > LargestFile ||
        !file.open(handle, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        close(handle);
        return false;
    }
    return true;
}

QString FileName(const QString& path)
{
    return path.section(path.contains(u'\\') ? u'\\' : u'/', -1);
}

/// How a file fares whose header has been read. `content` is empty where it has not been read yet, being too much.
Result Decode(const Header& header, QFile& file, const QByteArray& content, const Wish& wish)
{
    const bool tooMuch = content.isEmpty() || picturecontent::NeedsReader(header, content);
    if (tooMuch && (file.isOpen() || confinedreader::OpenMemory(file, content)))
        return ResultOf(confinedreader::ReadKnown(file.handle(), wish));
    if (tooMuch)
        return Fault(picturefile::UnreadableText());
    const picturecontent::Decoded decoded = picturecontent::Decode(header, content, wish);
    return decoded.picture.isNull() ? Fault(picturefile::UnreadableText())
                                    : Result{.picture = decoded.picture, .cut = decoded.cut};
}

/// The content of the file as far as the station wants it in its memory to decode it.
QByteArray ContentToDecode(const Header& header, QFile& file)
{
    const qint64 memory = file.size() + (header.IsJpeg() ? 0 : header.Pixels() * header.pixelBytes);
    if (memory > picturelimits::LargestInStation)
        return {};
    file.seek(0);
    return file.readAll();
}

Result ReadOpened(const Header& header, QFile& file, const Wish& wish, const QString& path)
{
    if (header.IsTooLarge())
        return TooLarge(header.size, header.IsJpeg());
    Result result = Decode(header, file, ContentToDecode(header, file), wish);
    if (result.cut)
        MarkCut(result.picture, FileName(path));
    if (header.IsReduced())
        result.size = header.size;
    return result;
}
} // namespace

Result picturefile::Read(const QString& path, const Wish& wish)
{
    QFile file;
    if ((wish.fit != Fit::Full && wish.room.isEmpty()) || !OpenRegular(file, path, O_NOFOLLOW))
        return Fault(picturefile::UnreadableText());
    // A film or an archive under a picture's name isn't read through.
    const std::optional<Header> header = picturecontent::HeaderOf(file);
    if (!header)
        return Fault(picturefile::UnreadableText());
    return ReadOpened(*header, file, wish, path);
}

Result picturefile::ReadForeign(const QString& path)
{
    QFile file;
    if (!OpenRegular(file, path, 0))
        return Fault(picturefile::UnreadableText());
    // Not even the header is looked at here.
    Answer answer = confinedreader::ReadKnown(file.handle(), {});
    if (answer.outcome == Outcome::Unreadable)
        answer = confinedreader::ReadForeign(file.handle());
    Result result = ResultOf(answer);
    picturecontent::MakeShowable(result.picture);
    if (result.cut)
        MarkCut(result.picture, FileName(path));
    if (!result.size.isEmpty()) {
        file.seek(0);
        result.content = file.readAll();
    }
    return result;
}

Result picturefile::ReadContent(const QByteArray& content, const Wish& wish)
{
    QBuffer buffer;
    buffer.setData(content);
    buffer.open(QIODevice::ReadOnly);
    const std::optional<Header> header = picturecontent::HeaderOf(buffer);
    if (!header || (wish.fit != Fit::Full && wish.room.isEmpty()))
        return Fault(picturefile::UnreadableText());
    if (header->IsTooLarge())
        return TooLarge(header->size, header->IsJpeg());
    QFile memory;
    return Decode(*header, memory, content, wish);
}

QString picturefile::UnreadableText()
{
    return u"읽을 수 없는 그림파일입니다.!!"_s;
}
