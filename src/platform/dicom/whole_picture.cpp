#include "platform/dicom/whole_picture.h"

#include "platform/imaging/confined_reader.h"

#include <QFile>

using namespace Qt::StringLiterals;
using confinedreader::Outcome;

namespace {

QString ProblemOf(Outcome outcome, bool isCut)
{
    switch (outcome) {
    case Outcome::Read:
        return isCut ? u"JPEG 그림이 도중에 끊겨 있습니다.!!"_s : QString();
    case Outcome::TooLarge:
    case Outcome::TooLargeJpeg:
        return u"DICOM으로 보내기에는 너무 큰 그림입니다.!!"_s;
    case Outcome::Stopped:
        return u"보내기를 그만두었습니다."_s;
    case Outcome::TooSlow:
        return u"그림파일을 읽는 데 시간이 너무 오래 걸립니다.!!"_s;
    default:
        return u"JPEG 그림이 깨져 있습니다.!!"_s;
    }
}

QByteArray PixelsOf(const QImage& picture, bool isGrey)
{
    const QImage plain = picture.convertToFormat(isGrey ? QImage::Format_Grayscale8 : QImage::Format_RGB888);
    const qsizetype rowBytes = qsizetype(plain.width()) * (isGrey ? 1 : 3);
    QByteArray pixels;
    pixels.reserve(rowBytes * plain.height());
    // A row in the picture ends at a whole word.
    for (int row = 0; row < plain.height(); ++row)
        pixels.append(reinterpret_cast<const char*>(plain.constScanLine(row)), rowBytes);
    return pixels;
}

void TakeTurned(WholePicture& whole, const confinedreader::Upright& upright)
{
    whole.problem = ProblemOf(upright.outcome, upright.cut);
    if (!whole.problem.isEmpty() || upright.turned.isEmpty())
        return;
    const QByteArray profile = whole.frame.profile;
    whole.frame = ReadJpegFrame(upright.turned);
    whole.frame.profile = whole.frame.components > 1 ? profile : QByteArray();
    whole.problem = whole.frame.problem;
}

void TakeDecoded(WholePicture& whole, const confinedreader::Answer& answer)
{
    whole.problem = ProblemOf(answer.outcome, answer.cut);
    // One beyond the limit comes at a lower scale.
    if (whole.problem.isEmpty() && !answer.size.isEmpty())
        whole.problem = ProblemOf(Outcome::TooLargeJpeg, false);
    if (!whole.problem.isEmpty())
        return;
    whole.pixels = PixelsOf(answer.picture, whole.frame.components == 1);
    whole.frame.columns = answer.picture.width();
    whole.frame.rows = answer.picture.height();
}

} // namespace

WholePicture ReadWholePicture(const QByteArray& content, const JpegFrame& frame, bool isDecoded,
                              const std::stop_token& stop)
{
    WholePicture whole;
    whole.frame = frame;
    QFile memory;
    if (confinedreader::ReaderProgram().isEmpty() || !confinedreader::OpenMemory(memory, content)) {
        whole.problem = u"capture-station-reader을(를) 실행할 수 없습니다.!!"_s;
        whole.isPassing = true;
    } else if (isDecoded) {
        TakeDecoded(whole, confinedreader::ReadKnown(memory.handle(), {}, stop));
    } else {
        TakeTurned(whole, confinedreader::TurnUpright(memory.handle(), stop));
    }
    whole.isPassing = whole.isPassing || stop.stop_requested();
    return whole;
}
