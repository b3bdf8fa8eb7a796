#pragma once

#include <QByteArray>
#include <QString>

class PictureJournal;
struct Visit;

/// The section's Log folder is the station's wastebasket: what is deleted goes there under its own name. The picture
/// that lies there under that name, whose number was taken again, gets a name of its own first: nothing is written
/// over, and the newest has the plain name. The administrator's program alone reads it, nothing empties it.

/// Throws PlatformError for a name under which a link, a pipe or the like stands: it is no picture and stays.
void CheckMovable(const Visit& visit, int number);
/// Moves a picture into the Log folder: copied, compared, and only then deleted. A picture that isn't there is no
/// fault, nor is a copy that lies there already. A section of the present year gets its Log folder where it has none.
/// `picture` is its identity, empty where that isn't known. Throws PlatformError when it can't be moved, is none, or
/// has become another meanwhile; what is there then stays.
void MoveToLogFolder(const Visit& visit, int number, const QString& presentYear, const QString& picture = {});

/// The same, but the picture's file stays. Gives its version; empty when it isn't there.
QByteArray CopyToLogFolder(const Visit& visit, int number, const QString& presentYear, const QString& picture);

/// Identity that a file bears in a note: of a picture in the Log folder, as far as it is known; empty otherwise.
QString IdentityOfDeleted(const QString& path);
/// The path with an identity in its file's name: `...001.jpg` becomes `...001-ID.jpg`.
QString PathWithIdentity(const QString& path, const QString& id);

/// Note of a file in the Log folder whose text is the picture's identity.
inline constexpr char IdentityNote[] = "picture";
/// Note of a file in the Log folder that nobody has deleted: it had no row when it was swept.
inline constexpr char SweptNote[] = "swept";

/// Moves the pictures of the visit and section that have no row into the Log folder. Since another station's rows may
/// be on their way, it waits two seconds once, and asks again. Numbers that are claimed, however long ago, or whose
/// rows wait are left alone. Throws PlatformError at the first query that fails, with nothing moved after it.
void SweepOrphanPictures(const Visit& visit, const PictureJournal& journal);
