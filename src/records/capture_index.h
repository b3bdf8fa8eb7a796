#pragma once

#include <QList>
#include <QStringList>

#include <compare>
#include <optional>
#include <set>

struct Visit;

/// The rows of `cap` and `ca`, and the clinic's mark of a visit. A failing statement is a PlatformError.

enum class NumberOrder { Any, Ascending };
/// The numbers of the visit's pictures, as their rows say.
QList<int> StoredNumbers(const Visit& visit, NumberOrder order);
/// The largest number among them, 0 when the visit has none.
int NextCaptureNo(const Visit& visit);
/// True when the picture has a `cap` row.
bool HasPictureRow(const Visit& visit, int number);

/// A picture as its row names it, texts as they stand.
struct PictureKey
{
    QString chart;
    QString ymd;
    QString etc;
    int number = 0;

    std::strong_ordering operator<=>(const PictureKey& other) const = default;
    /// The visit, without a number.
    PictureKey OfVisit() const { return {chart, ymd, etc}; }
};
/// Rows of a year's pictures in the order of their key, behind `after` or from the first on: as many at a time as
/// `most` says, so that a year of any size needs little memory.
QList<PictureKey> StoredPictures(const QString& year, const std::optional<PictureKey>& after, int most);
/// Those of a section's pictures that have a row; a few hundred at a time are one short statement.
std::set<PictureKey> PicturesWithRow(const QString& section, const QList<PictureKey>& pictures);
/// The visits of these charts in a year that have a `ca` row, numbers 0.
std::set<PictureKey> VisitsWithRow(const QString& year, const QStringList& charts);
/// True when the visit has a `ca` row.
bool HasVisitRow(const Visit& visit);
/// Years of which there are pictures.
QStringList StoredYears();

/// A visit as a list of visits shows it: trimmed texts.
struct VisitLine
{
    QString ymd;
    QString etc;
    QString note;
};
/// All visits of a chart, newest first, all sections. Kind "A" is what the station files.
QList<VisitLine> StoredVisits(const QString& chart, const QString& kind);

/// A note as it is stored: cleaned, as many characters long as it was typed.
QString NoteForStore(const QString& typed);
/// Writes the `cap` row of a picture.
void WritePictureRow(const Visit& visit, int number);
/// Patient type of the visit as its rows tell it, trimmed; empty without a row.
QString StoredPatientType(const Visit& visit);
/// Writes the `cap` row of a picture whose number is claimed and has none, and a `ca` row without a note where the
/// visit has none; one that is there stays as it is. After a fault neither row has been added, unless that is
/// DatabaseAway.
void AddCaptureRows(const Visit& visit, int number);

void DeletePictureRow(const Visit& visit, int number);
/// The `ca` row, with the note, when the visit has no picture left. True when it had none.
bool DeleteEmptyVisitRow(const Visit& visit);

/// The clinic's table for the capture mark.
enum class MarkTable { Endo, Yk };
/// Sets the capture mark of the visit and its examining doctor in the clinic's table, "1" or "0". A clinic without a
/// matching row gets none.
void MarkVisitCaptured(const Visit& visit, const QString& doctor, const QString& mark, MarkTable table);
