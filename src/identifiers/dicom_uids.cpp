#include "identifiers/dicom_uids.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QUuid>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

/// Of the names that the station makes identifiers from.
const QUuid StationNames(u"{6b0f0e53-3c0e-4d3e-9a55-0f4b1c7f6f2d}"_s);
/// Of the series, in their order.
const std::array<QString, 4> SeriesNames{u"series"_s, u"reports"_s, u"movies"_s, u"rejections"_s};
const std::array<QString, 4> ModalityWords{u"ES"_s, u"US"_s, u"GM"_s, u"XC"_s};
/// VL Endoscopic, Ultrasound, VL Microscopic and VL Photographic Image Storage.
const std::array<QString, 4> ClassUids{u"1.2.840.10008.5.1.4.1.1.77.1.1"_s, u"1.2.840.10008.5.1.4.1.1.6.1"_s,
                                       u"1.2.840.10008.5.1.4.1.1.77.1.2"_s, u"1.2.840.10008.5.1.4.1.1.77.1.4"_s};
/// Of the series: VL Endoscopic Image, Encapsulated PDF, Video Endoscopic Image and Key Object Selection Document
/// Storage.
const std::array<QString, 4> SeriesClassUids{u"1.2.840.10008.5.1.4.1.1.77.1.1"_s, u"1.2.840.10008.5.1.4.1.1.104.1"_s,
                                             u"1.2.840.10008.5.1.4.1.1.77.1.1.1"_s, u"1.2.840.10008.5.1.4.1.1.88.59"_s};
/// A character that no field holds.
constexpr QChar Between(u'\x1f');

/// A UUID is a number of 128 bits, and stands in an identifier as its decimal digits.
QString DecimalOf(const QUuid& uuid)
{
    const QByteArray bytes = uuid.toRfc4122();
    unsigned __int128 number = 0;
    for (const char byte : bytes)
        number = number << 8 | static_cast<unsigned char>(byte);
    QString digits;
    for (; number != 0; number /= 10)
        digits.prepend(QChar(u'0' + static_cast<char16_t>(number % 10)));
    return digits;
}

QString Uid(const QString& root, const QUuid& uuid)
{
    return (root.isEmpty() ? u"2.25"_s : root) + u'.' + DecimalOf(uuid);
}

QString Uid(const DicomPicture& picture, const QStringList& fields)
{
    return Uid(picture.identity.uidRoot, QUuid::createUuidV5(StationNames, fields.join(Between)));
}

QString HashOf(const QByteArray& content)
{
    return QString::fromLatin1(QCryptographicHash::hash(content, QCryptographicHash::Blake2b_256).toHex());
}

QStringList StudyFields(const DicomPicture& picture)
{
    return {picture.identity.institution.trimmed(), picture.chart.trimmed(), picture.ymd.trimmed(),
            picture.section.trimmed()};
}

} // namespace

QString StudyUid(const DicomPicture& picture)
{
    if (!picture.identity.study.isEmpty())
        return picture.identity.study;
    return Uid(picture, StudyFields(picture) << u"study"_s);
}

QString SeriesUid(const DicomPicture& picture, DicomSeries series)
{
    return Uid(picture, StudyFields(picture) << SeriesNames.at(static_cast<std::size_t>(series)));
}

QString InstanceUid(const DicomPicture& picture, const QByteArray& content)
{
    QStringList fields = StudyFields(picture);
    fields << u"instance"_s << QString::number(picture.number) << HashOf(content);
    if (picture.restorings > 0)
        fields << QString::number(picture.restorings);
    return Uid(picture, fields);
}

QString InstanceUid(const DicomPicture& facts, DicomSeries series, const QByteArray& content)
{
    return Uid(facts, StudyFields(facts) << SeriesNames.at(static_cast<std::size_t>(series)) << u"instance"_s
                                         << HashOf(content));
}

int InstanceOfMarking(int number, int times)
{
    constexpr int OfFew = 1000;
    constexpr int OfMany = 100'000;
    constexpr int MostTimes = 20'000;
    return std::min(times, MostTimes) * (number < OfFew ? OfFew : OfMany) + number;
}

QString ClassUidOf(DicomModality modality)
{
    return ClassUids.at(static_cast<std::size_t>(modality));
}

QString ClassUidOf(DicomSeries series)
{
    return SeriesClassUids.at(static_cast<std::size_t>(series));
}

DicomSeries SeriesOfClass(const QString& classUid)
{
    const auto found = std::ranges::find(SeriesClassUids, classUid);
    return found == SeriesClassUids.end() ? DicomSeries::Images
                                          : static_cast<DicomSeries>(found - SeriesClassUids.begin());
}

QString WordOf(DicomModality modality)
{
    return ModalityWords.at(static_cast<std::size_t>(modality));
}

std::optional<DicomModality> ModalityOf(const QString& word)
{
    const auto found = std::ranges::find(ModalityWords, word);
    return found == ModalityWords.end() ? std::nullopt
                                        : std::optional(static_cast<DicomModality>(found - ModalityWords.begin()));
}

QString NewUid(const QString& root)
{
    return Uid(root, QUuid::createUuid());
}

bool IsUid(const QString& uid)
{
    static const QRegularExpression components(uR"(\A(0|[1-9]\d*)(\.(0|[1-9]\d*))+\z)"_s);
    return uid.size() <= 64 && components.match(uid).hasMatch();
}

bool IsUidRoot(const QString& root)
{
    return root.size() <= 24 && IsUid(root);
}
