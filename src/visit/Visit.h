#pragma once

#include <QString>

#include <limits>

/// The visit as one value, and the scheme of folders and names: where captures lie and how they are called. Nothing
/// else in the station knows.
///
/// Folders are joined with backslashes and end in one. Every routine refuses, with a PlatformError, a part that would
/// leave its folder: `..`, a separator or a NUL inside, or a name that no file system takes.

/// A section or another single part of a path; gives it back when it may stand in one.
QString CheckedPathPart(const QString& part);

/// Year folder of a date `yyyymmdd` below the root of all captures.
QString YearFolder(const QString& captureRoot, const QString& ymd);
/// Root that a year folder lies in, with the separator at its end.
QString RootOfYear(const QString& yearFolder);
QString SectionFolder(const QString& yearFolder, const QString& section);
/// Where the deleted pictures of a section go.
QString LogFolder(const QString& yearFolder, const QString& section);
QString MovieFolder(const QString& yearFolder);
/// Path of one file of a movie.
QString MoviePath(const QString& stem, int segment);

/// A patient's visit in one examination section, as its rows name it, with the place of its files. It stays what it was
/// when the operator has gone on to another section, and when the setup has changed since.
struct Visit
{
    QString chart;      ///< Eight columns.
    QString yuhyung;    ///< Patient type code.
    QString ymd;        ///< `yyyymmdd`
    QString etc;        ///< Examination section.
    QString captureDir; ///< Year folder.
    QString imageExt;   ///< "jpg" or "bmp".

    /// Picture numbers are 16-bit.
    static constexpr int LargestNumber = std::numeric_limits<qint16>::max();

    /// The same rows: chart, date and section.
    bool operator==(const Visit& other) const;

    QString SectionFolder() const;
    QString LogFolder() const;
    /// Full path of a picture.
    QString PicturePath(int number) const;
    /// Path of the picture once it is deleted.
    QString DeletedPicturePath(int number) const;
    /// Path of the small file that claims a number while its picture is being filed.
    QString ClaimPath(int number) const;
    /// What the names of the visit's pictures begin with.
    QString PicturePrefix() const { return chart + ymd; }
    /// Number in a file's name, 0 when it is not a picture of this visit.
    int PictureNumber(const QString& name) const;
    /// Path of the visit's movie files without number and extension. Movies are of a visit, whatever the section.
    QString MovieStem() const;
};
