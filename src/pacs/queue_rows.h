#pragma once

#include "pacs/PacsLine.h"

#include <QHash>
#include <QStringList>

class LocalDatabase;

/// The tables of the sender's queue. Texts as they were handed over.
namespace queue_rows {

/// Makes those that aren't there, and what those of an earlier release lack. Throws PlatformError.
void MakeTables(LocalDatabase& queue);

QString Write(const PacsLine& line);
/// The lines with their places, in their order, as many as `most` says.
QList<std::pair<qint64, PacsLine>> Lines(LocalDatabase& queue, int most);
QString RemoveLinesUpTo(qint64 place);

/// It isn't one of an earlier release, whose pictures have none.
bool HasParts(LocalDatabase& queue);
/// Entries that meet a condition on the table's columns, in the order of their turns. Without parts it is a queue of an
/// earlier release, which is only looked at. Throws PlatformError.
QList<PacsEntry> Entries(LocalDatabase& queue, const QString& condition, bool hasParts = true);
/// The state's word in the rows.
QString Word(PacsState state);
/// The condition that a picture has that state, or what gives it to a row.
QString Is(PacsState state);
/// The condition that a row is of that picture, whichever part, or, without a number, of that visit.
QString Same(const QString& chart, const QString& ymd, const QString& etc, int number);
/// A time as the rows have it; empty for one that isn't valid.
QString TimeText(const QDateTime& time);
/// The condition that a row is that very one.
QString Same(const PacsEntry& entry);

/// An earlier release may have sent pictures of the visit under an identity that nobody has kept.
bool MayHaveBeenSent(LocalDatabase& queue, const QString& chart, const QString& ymd, const QString& etc);

/// The tables that are there and tell of patients, each by its column `chart`.
QStringList PatientTables(LocalDatabase& queue);

/// What the sender tells of itself, by name.
QHash<QString, QString> Status(LocalDatabase& queue);
QString WriteStatus(const QString& name, const QString& value);

/// Names in the status.
inline constexpr char16_t SenderMark[] = u"sender"; ///< Mark of the process; see FileStore::ProcessMark.
inline constexpr char16_t AwayReason[] = u"away";   ///< Why nothing goes; empty while it does.
inline constexpr char16_t SentNow[] = u"sent";      ///< How many since nothing waited.
inline constexpr char16_t SetupDigest[] = u"setup"; ///< What its setup is known by.

} // namespace queue_rows
