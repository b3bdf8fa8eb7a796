#include "pacs/parts.h"

#include "identifiers/dicom_uids.h"
#include "pacs/PacsLine.h"

using namespace Qt::StringLiterals;

namespace {

const QString Report = u"report:"_s;
const QString Movie = u"movie:"_s;
const QString Rejection = u"rejection:"_s;

} // namespace

QString parts::ReportOf(const QString& yeonno)
{
    return Report + yeonno.trimmed();
}

bool parts::IsReport(const QString& part)
{
    return part.startsWith(Report);
}

QString parts::MovieOf(const QString& fileName)
{
    return Movie + fileName;
}

bool parts::IsMovie(const QString& part)
{
    return part.startsWith(Movie);
}

QString parts::RejectionOf(const QString& uid)
{
    return Rejection + uid;
}

bool parts::IsRejection(const QString& part)
{
    return part.startsWith(Rejection);
}

QString parts::SearchOf(const QString& id)
{
    return u'?' + id;
}

bool parts::IsSearch(const QString& part)
{
    return part.startsWith(Rejection + u'?');
}

QString parts::ValueOf(const QString& part)
{
    return part.section(u':', 1);
}

bool parts::IsOfPicture(const QString& part)
{
    return part.isEmpty() || part == QStringView(Original);
}

QString parts::IsOfPicture()
{
    return u"part IN ( '', 'original' )"_s;
}

QString parts::IsRejection()
{
    return u"part LIKE 'rejection:%'"_s;
}

QString parts::IsRejected()
{
    return u"EXISTS ( SELECT * FROM picture AS note WHERE note.chart = picture.chart AND note.ymd = picture.ymd AND "
           "note.etc = picture.etc AND note.number = picture.number AND note.part = 'rejection:' || picture.uid AND "
           "note.state IN ( 'underway', 'sent', 'committed' ) )"_s;
}

QString parts::IsStaying()
{
    return u"state = 'withdrawn' AND uid <> '' AND part NOT LIKE 'rejection:%' AND NOT EXISTS ( SELECT * FROM picture "
           "AS note WHERE note.chart = picture.chart AND note.ymd = picture.ymd AND note.etc = picture.etc AND "
           "note.number = picture.number AND note.part = 'rejection:' || picture.uid )"_s;
}

QString parts::IsRawMovie()
{
    return u"( part LIKE 'movie:%' AND text = '' )"_s;
}

QString parts::ClassOf(const PacsEntry& entry)
{
    // Earlier releases sent pictures of endoscopes alone.
    return entry.classUid.isEmpty() ? ClassUidOf(DicomModality::Endoscopy) : entry.classUid;
}

QList<DicomReference> parts::StoredOf(const PacsEntry& entry)
{
    QList<DicomReference> stored;
    const QStringList formers = IsOfPicture(entry.part) ? entry.text.split(u'\n', Qt::SkipEmptyParts) : QStringList();
    for (const QString& former : formers)
        stored.append({former.section(u' ', 0, 0), former.section(u' ', 1)});
    if (!entry.uid.isEmpty())
        stored.append({ClassOf(entry), entry.uid});
    return stored;
}

QString parts::TextWithFormer(const PacsEntry& entry)
{
    return entry.text + ClassOf(entry) + u' ' + entry.uid + u'\n';
}
