#pragma once

#include <QString>

/// Where captures lie and how they are called. Nothing else in the station knows.
///
/// Folders are joined with backslashes and end in one. Every routine refuses, with a PlatformError, a part that would
/// leave its folder: `..`, a separator or a NUL inside, or a name that no file system takes.

/// A section or another single part of a path; gives it back when it may stand in one.
QString CheckedPathPart(const QString& part);

/// Year folder of a date `yyyymmdd` below the root of all captures.
QString YearFolder(const QString& captureRoot, const QString& ymd);
QString SectionFolder(const QString& yearFolder, const QString& section);
/// Where the deleted pictures of a section go.
QString LogFolder(const QString& yearFolder, const QString& section);
QString MovieFolder(const QString& yearFolder);

/// Name of a picture without its extension: chart, date, and the number with at least three digits.
QString PictureStem(const QString& chart, const QString& ymd, int number);
/// Full path of a picture; `extension` without its point.
QString PicturePath(const QString& yearFolder, const QString& section, const QString& chart, const QString& ymd,
                    int number, const QString& extension);
/// Path of the small file that claims a number while its picture is being filed.
QString ClaimPath(const QString& yearFolder, const QString& section, const QString& chart, const QString& ymd,
                  int number);
/// Path of a visit's movie files without number and extension. Movies are of a visit, whatever the section.
QString MovieStem(const QString& yearFolder, const QString& chart, const QString& ymd);
/// Path of one file of a movie.
QString MoviePath(const QString& stem, int segment);
/// Number in a picture's name, 0 when it is not a picture of that chart and date with that extension.
int PictureNumber(const QString& name, const QString& chart, const QString& ymd, const QString& extension);
