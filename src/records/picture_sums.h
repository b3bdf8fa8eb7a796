#pragma once

#include "records/capture_index.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <optional>

/// What the station's pictures were when they were written, as the station's table `ca_sum` keeps it: a row for each
/// picture under its identity, also for those that were deleted. A clinic without that table goes on without, and the
/// journal says so once; so it does where the server refuses a sum. All that ask the table are to be called where
/// statements may be; DatabaseAway is thrown on.

/// The sum of a file's content.
struct PictureSum
{
    QString hash;     ///< SHA-256, 64 small hexadecimal digits; empty when it isn't known.
    qint64 bytes = 0; ///< Length of the content.

    bool IsKnown() const { return !hash.isEmpty(); }
    bool operator==(const PictureSum&) const = default;
};

PictureSum SumOf(const QByteArray& content);
/// Of a file of any length, read piece by piece. Throws PlatformError, also for anything but a regular file.
PictureSum SumOfFile(const QString& path);

/// The bytes of a SHA-256.
using PictureDigest = std::array<char, 32>;
PictureDigest DigestOf(const QByteArray& content);
/// Zeros for a text that is none.
PictureDigest DigestIn(const QString& hash);
QString HashOf(const PictureDigest& digest);

enum class SumState {
    Live,
    Trusted, ///< Live, and taken from the file as it was found, long after it was written.
    Deleted,
};

/// Stands in the section's place in the rows of movies, which are the visit's whatever the section.
inline constexpr char16_t MovieSection[] = u"movie";

/// A row of the table.
struct StoredSum
{
    PictureKey picture;
    QString id;
    PictureSum sum;
    QString at; ///< When the row came to say so: ISO 8601, UTC.
    SumState state = SumState::Live;

    bool IsLive() const { return state != SumState::Deleted; }
};

/// Identity of the picture that has the number now; empty when the table doesn't know it.
QString PictureIdOf(const Visit& visit, int number);
/// Keeps the sum of a new picture; a row of its identity stays as it is, but for a deletion.
void KeepSum(const Visit& visit, int number, const QString& id, const PictureSum& sum, SumState state);
/// The picture's file has become another, and the picture stays the same: the live one of the number or, with
/// `Deleted`, the one that was known last under it. One that has no row gets one, under a new identity.
void ReplaceSum(const Visit& visit, int number, const PictureSum& sum, SumState state);
/// `id` may be empty.
void SumIsDeleted(const Visit& visit, int number, const QString& id);
/// A deleted picture is back under a number. Without an identity it is the one of the visit with that sum.
void SumIsRestored(const Visit& visit, int number, const QString& id, const PictureSum& sum);

/// Sums, without their times, of a year's pictures in the order of the table's key, behind `after` or from the first
/// on, as many at a time as `most` says. Nothing without the table.
std::optional<QList<StoredSum>> StoredSums(const QString& year, const std::optional<StoredSum>& after, int most);
/// The live ones of the year's movies. Nothing without the table.
QList<StoredSum> MovieSums(const QString& year);
/// All of a number's, the latest first. Throws PlatformError.
QList<StoredSum> SumsOf(const Visit& visit, int number);
/// All of a visit's. Nothing without the table.
QList<StoredSum> SumsOfVisit(const Visit& visit);
/// Adds a row for a picture that has no live one; false when it has. Throws PlatformError.
bool TrustSum(const Visit& visit, int number, const PictureSum& sum);
