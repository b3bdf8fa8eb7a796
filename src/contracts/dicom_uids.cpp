#include "contracts/dicom_uids.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

/// Of the names that the station makes identifiers from.
const QUuid StationNames(u"{6b0f0e53-3c0e-4d3e-9a55-0f4b1c7f6f2d}"_s);
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

QString Uid(const DicomPicture& picture, const QStringList& fields)
{
    const QString root = picture.identity.uidRoot.isEmpty() ? u"2.25"_s : picture.identity.uidRoot;
    return root + u'.' + DecimalOf(QUuid::createUuidV5(StationNames, fields.join(Between)));
}

QStringList StudyFields(const DicomPicture& picture)
{
    return {picture.identity.institution.trimmed(), picture.chart.trimmed(), picture.ymd.trimmed(),
            picture.section.trimmed()};
}

} // namespace

QString StudyUid(const DicomPicture& picture)
{
    return Uid(picture, StudyFields(picture) << u"study"_s);
}

QString SeriesUid(const DicomPicture& picture)
{
    return Uid(picture, StudyFields(picture) << u"series"_s);
}

QString InstanceUid(const DicomPicture& picture, const QByteArray& content)
{
    const QByteArray hash = QCryptographicHash::hash(content, QCryptographicHash::Blake2b_256).toHex();
    return Uid(picture, StudyFields(picture)
                            << u"instance"_s << QString::number(picture.number) << QString::fromLatin1(hash));
}

bool IsUidRoot(const QString& root)
{
    static const QRegularExpression components(uR"(\A(0|[1-9]\d*)(\.(0|[1-9]\d*))+\z)"_s);
    return root.size() <= 24 && components.match(root).hasMatch();
}
