#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"
#include "identifiers/dicom_uids.h"
#include "platform/dicom/DcmtkKit.h"
#include "platform/dicom/DcmtkRun.h"
#include "platform/dicom/document_elements.h"
#include "platform/dicom/link_outcomes.h"
#include "platform/dicom/picture_elements.h"
#include "platform/dicom/whole_picture.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace dicomlink;
using namespace linkoutcomes;
using peeranswers::Asked;
using peeranswers::Reason;

namespace {

constexpr qint64 StoreGraceMs = 10'000;
/// On a slow line, in bytes a second.
constexpr qint64 LeastSpeed = 100'000;
/// Of one value: its length has 32 bits, and is even.
constexpr qint64 MostMovie = 0xFFFFFFFC;

constexpr double LongestFrameMs = 60'000;

/// For a server that takes JPEG.
struct JpegLook final : DicomLook
{
    JpegFrame frame;    ///< As the file has it.
    WholePicture whole; ///< As it may leave.
};

/// A side of a picture has 16 bits.
bool IsWithin(int pixels)
{
    return pixels > 0 && pixels <= 0xFFFF;
}

DicomReference SelfOf(const DicomPicture& facts, DicomSeries series, const QByteArray& content)
{
    return {ClassUidOf(series), InstanceUid(facts, series, content)};
}

/// Of a name: what may stand in one of a medium.
QString FileSetId(const QString& name)
{
    constexpr qsizetype Longest = 16;
    static const QRegularExpression others(u"[^A-Z0-9]+"_s);
    QString id = name.toUpper().replace(others, u"_"_s).left(Longest);
    while (id.startsWith(u'_'))
        id.remove(0, 1);
    while (id.endsWith(u'_'))
        id.chop(1);
    return id.isEmpty() ? u"CAPTURE_STATION"_s : id;
}

} // namespace

bool DcmtkKit::Takes(const Taken& taken, const QString& classUid, Content content)
{
    const QStringList syntaxes = content == Content::Jpeg ? QStringList{u"1.2.840.10008.1.2.4.50"_s}
                                 : content == Content::Movie
                                     ? QStringList{u"1.2.840.10008.1.2.4.102"_s}
                                     : QStringList{u"1.2.840.10008.1.2.1"_s, u"1.2.840.10008.1.2"_s};
    return std::ranges::any_of(
        taken, [&](const auto& each) { return each.first == classUid && syntaxes.contains(each.second); });
}

DicomOutcome DcmtkKit::PackPicture(const QByteArray& content, const WholePicture& whole, const DicomPicture& picture,
                                   Coding coding, Parcel& parcel)
{
    const bool isDecoded = coding == Coding::Uncompressed;
    if (!whole.problem.isEmpty())
        return {whole.isPassing ? DicomOutcome::Away : DicomOutcome::Refused, whole.problem};
    parcel.self = {ClassUidOf(picture.study.kind.modality), InstanceUid(picture, content)};
    parcel.made = ElementsOf(picture, parcel.self, whole.frame, coding);
    parcel.content = isDecoded ? Content::Pixels : Content::Jpeg;
    parcel.bytes = isDecoded ? whole.pixels : whole.frame.coded;
    if (parcel.bytes.size() > MostFrame)
        return {DicomOutcome::Refused, u"DICOM으로 보내기에는 너무 큰 그림입니다.!!"_s};
    return {DicomOutcome::Accepted};
}

QCborMap DcmtkKit::RequestOfParcel(Request asked, const Parcel& parcel)
{
    QCborMap request = RequestOf(asked);
    request[ElementsKey] = CborOf(parcel.made.elements);
    request[ContentKey] = static_cast<int>(parcel.content);
    if (!parcel.bytes.isEmpty())
        request[FrameKey] = parcel.bytes;
    if (!parcel.path.isEmpty())
        request[PathKey] = parcel.path;
    return request;
}

DicomOutcome DcmtkKit::Send(const Parcel& parcel, const std::stop_token& stop)
{
    if (!Takes(m_taken, parcel.self.classUid, parcel.content))
        return peeranswers::OfNoContext(parcel.asked);
    QCborMap answer;
    const qint64 bytes = qMax<qint64>(parcel.size, parcel.bytes.size());
    const qint64 patienceMs = m_patience.answerSeconds * 1000LL + StoreGraceMs + bytes * 1000 / LeastSpeed;
    const LinkProcess::End end =
        m_link.Ask(RequestOfParcel(Request::Store, parcel), answer, MostPlain, patienceMs, stop);
    DicomOutcome outcome = end == LinkProcess::End::Answered ? OfAnswer(answer, parcel.asked, DicomOutcome::Broken)
                                                             : OfEnd(end, {DicomOutcome::Broken, BrokenText()});
    const bool isAccepted = outcome.kind == DicomOutcome::Accepted;
    outcome.isOtherSet = parcel.made.isOtherSet && isAccepted;
    if (isAccepted)
        outcome.stored = parcel.self;
    if (outcome.kind == DicomOutcome::Away || outcome.kind == DicomOutcome::Broken)
        Close();
    return outcome;
}

std::shared_ptr<const DicomLook> DcmtkKit::Look(const QByteArray& content, const std::stop_token& stop) const
{
    auto look = std::make_shared<JpegLook>();
    look->frame = ReadJpegFrame(content);
    if (look->frame.problem.isEmpty())
        look->whole = ReadWholePicture(content, look->frame, false, stop);
    return look->whole.isPassing ? nullptr : look;
}

DicomOutcome DcmtkKit::Store(const QByteArray& content, const DicomPicture& picture,
                             const std::shared_ptr<const DicomLook>& look, const std::stop_token& stop)
{
    const auto* looked = dynamic_cast<const JpegLook*>(look.get());
    const JpegFrame frame = looked != nullptr ? looked->frame : ReadJpegFrame(content);
    if (!frame.problem.isEmpty())
        return {DicomOutcome::Refused, frame.problem};
    if (!m_isOpen)
        return NotConnected();
    const QString classUid = ClassUidOf(picture.study.kind.modality);
    const bool isJpeg = Takes(m_taken, classUid, Content::Jpeg);
    if (!isJpeg && !Takes(m_taken, classUid, Content::Pixels))
        return peeranswers::OfNoContext(Asked::Store);
    Parcel parcel;
    DicomOutcome packed = PackPicture(
        content, isJpeg && looked != nullptr ? looked->whole : ReadWholePicture(content, frame, !isJpeg, stop), picture,
        isJpeg ? Coding::Jpeg : Coding::Uncompressed, parcel);
    if (packed.kind == DicomOutcome::Accepted)
        return Send(parcel, stop);
    if (packed.kind == DicomOutcome::Away)
        Close();
    return packed;
}

DicomOutcome DcmtkKit::StoreReport(const QByteArray& pdf, const DicomReport& report, const DicomPicture& facts,
                                   const std::stop_token& stop)
{
    if (!pdf.startsWith("%PDF-") || pdf.size() > MostFrame)
        return {DicomOutcome::Refused, u"결과지가 PDF가 아니거나 너무 큽니다.!!"_s};
    if (!m_isOpen)
        return NotConnected();
    Parcel parcel{SelfOf(facts, DicomSeries::Reports, pdf)};
    parcel.made = ElementsOf(report, pdf, facts, parcel.self);
    parcel.content = Content::Document;
    parcel.bytes = pdf;
    parcel.asked = Asked::Report;
    return Send(parcel, stop);
}

DicomOutcome DcmtkKit::StoreMovie(const QString& path, const DicomMovie& movie, const DicomPicture& facts,
                                  const std::stop_token& stop)
{
    const QString native = NativePath(path);
    const qint64 bytes = QFileInfo(native).size();
    if (bytes <= 0)
        return {DicomOutcome::Refused, u"보낼 동영상 파일을 읽을 수 없습니다.!!"_s};
    if (bytes > MostMovie)
        return {DicomOutcome::Refused, u"DICOM으로 보내기에는 너무 큰 동영상입니다.!!"_s};
    if (!IsWithin(movie.columns) || !IsWithin(movie.rows) || movie.frames <= 0 || !(movie.frameMs > 0) ||
        movie.frameMs > LongestFrameMs)
        return {DicomOutcome::Refused, u"동영상의 크기나 길이를 알 수 없습니다.!!"_s};
    if (!m_isOpen)
        return NotConnected();
    Parcel parcel{SelfOf(facts, DicomSeries::Movies, movie.key)};
    parcel.made = ElementsOf(movie, bytes, facts, parcel.self);
    parcel.content = Content::Movie;
    parcel.path = native;
    parcel.size = bytes;
    parcel.asked = Asked::Movie;
    return Send(parcel, stop);
}

DicomOutcome DcmtkKit::StoreRejection(const QList<DicomReference>& rejected, const QDateTime& at,
                                      const DicomPicture& facts, const std::stop_token& stop)
{
    if (!m_isOpen)
        return NotConnected();
    QByteArray content;
    for (const DicomReference& each : rejected)
        content += each.uid.toLatin1() + '\n';
    Parcel parcel{SelfOf(facts, DicomSeries::Rejections, content)};
    parcel.made = ElementsOf(rejected, at, facts, parcel.self);
    parcel.asked = Asked::Rejection;
    return Send(parcel, stop);
}

DicomOutcome DcmtkKit::MakeObject(const QByteArray& content, const DicomPicture& picture, Coding coding,
                                  QByteArray& object, const std::stop_token& stop)
{
    const JpegFrame frame = ReadJpegFrame(content);
    if (!frame.problem.isEmpty())
        return {DicomOutcome::Refused, frame.problem};
    Parcel parcel;
    const WholePicture whole = ReadWholePicture(content, frame, coding == Coding::Uncompressed, stop);
    if (DicomOutcome packed = PackPicture(content, whole, picture, coding, parcel);
        packed.kind != DicomOutcome::Accepted)
        return packed;
    QCborMap answer;
    const LinkProcess::End end =
        m_link.Ask(RequestOfParcel(Request::Make, parcel), answer, MostMessage, MakingMs, stop);
    m_isOpen = m_isOpen && end == LinkProcess::End::Answered;
    if (end != LinkProcess::End::Answered)
        return OfEnd(end, {DicomOutcome::Broken, u"DICOM 파일을 만들지 못했습니다.!!"_s});
    object = answer.value(ObjectKey).toByteArray();
    if (object.isEmpty())
        return OfAnswer(answer, Asked::Store, DicomOutcome::Broken);
    DicomOutcome outcome{DicomOutcome::Accepted};
    outcome.isOtherSet = parcel.made.isOtherSet;
    outcome.stored = parcel.self;
    return outcome;
}

DicomOutcome DcmtkKit::MakeDirectory(const QString& folder, const DicomDisc& disc, const std::stop_token& stop)
{
    try {
        DeleteFile(folder + u"DICOMDIR"_s);
        QStringList objects;
        const QString below = folder + u"DICOM\\"_s;
        if (FolderExists(below)) {
            for (const FolderEntry& entry : Files().Entries(below)) {
                if (!entry.IsFolder && !entry.IsLink)
                    objects << u"DICOM/"_s + entry.Name;
            }
        }
        if (objects.isEmpty())
            return {DicomOutcome::Accepted};
        // For any viewer, or for those that read compressed pictures.
        const QStringList options{disc.isUncompressed ? u"-Pgp"_s : u"-Pdv"_s, u"+F"_s, FileSetId(disc.name)};
        const DcmtkResult result = RunDcmtk(u"dcmmkdir"_s, options + objects, folder, int(MakingMs), stop);
        if (result.succeeded)
            return {DicomOutcome::Accepted};
        const QString told = result.lines.isEmpty() ? QString() : result.lines.last();
        return {DicomOutcome::Away,
                result.fault.isEmpty() ? Reason(u"DICOMDIR을 만들지 못했습니다.!!"_s, told) : result.fault};
    } catch (const PlatformError& error) {
        return {DicomOutcome::Away, error.Text()};
    }
}
