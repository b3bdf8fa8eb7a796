#pragma once

#include "contracts/dicom.h"

#include <QList>
#include <QString>

struct PacsEntry;

/// Which objects there are of a picture or a visit: what `PacsEntry::part` says.
namespace parts {

/// The picture as it was before it was marked up.
inline constexpr char16_t Original[] = u"original";

QString ReportOf(const QString& yeonno);
bool IsReport(const QString& part);
/// By the name of its file.
QString MovieOf(const QString& fileName);
bool IsMovie(const QString& part);
/// What takes back the object that the server has under that identifier; its class is the entry's text.
QString RejectionOf(const QString& uid);
bool IsRejection(const QString& part);
/// In the place of the identifier: what the server has of the deleted picture is still to be found.
QString SearchOf(const QString& id);
bool IsSearch(const QString& part);
/// Behind the part's colon.
QString ValueOf(const QString& part);
/// The picture itself, or its original.
bool IsOfPicture(const QString& part);

/// The same as conditions on rows of the queue.
QString IsOfPicture();
QString IsRejection();
/// That what the server has of the row has been rejected there.
QString IsRejected();
/// That the row is deleted here, and the server has it and isn't told of that.
QString IsStaying();
/// That a movie has still to be made ready.
QString IsRawMovie();

/// All that the server has of an entry: of a picture also earlier markings, which its text tells.
QList<DicomReference> StoredOf(const PacsEntry& entry);
/// The text of a picture that has been sent once more as another object.
QString TextWithFormer(const PacsEntry& entry);
/// The class that it went as: earlier releases kept none, and knew one.
QString ClassOf(const PacsEntry& entry);

} // namespace parts
