#include "contracts/LocalDatabase.h"
#include "pacs/parts.h"
#include "pacs/queue_rows.h"
#include "records/Statement.h"
#include "sender/Ledger.h"
#include "sender/LedgerChange.h"

using namespace Qt::StringLiterals;
using queue_rows::Is;
using queue_rows::Same;

namespace {

QString Where(const PacsEntry& entry)
{
    return u" WHERE "_s + Same(entry);
}

} // namespace

QDateTime Ledger::FirstTakenAt(const PacsEntry& entry)
{
    return QDateTime::fromString(m_database
                                     ->Rows(u"SELECT MIN( takenAt ) FROM picture WHERE takenAt <> '' AND "_s +
                                            parts::IsOfPicture() + u" AND state <> 'withdrawn' AND "_s +
                                            Same(entry.chart, entry.ymd, entry.etc, 0))
                                     .value(0)
                                     .value(0)
                                     .toString(),
                                 Qt::ISODateWithMs);
}

Ledger::Siblings Ledger::SiblingsOf(const PacsEntry& entry)
{
    Siblings siblings;
    for (const PacsEntry& row : queue_rows::Entries(*m_database, Same(entry.chart, entry.ymd, entry.etc, 0) +
                                                                     u" AND number = %1"_s.arg(entry.number))) {
        if (parts::IsOfPicture(row.part))
            siblings.stored += parts::StoredOf(row);
        if (row.part == QStringView(parts::Original) && row.state == PacsState::SetAside)
            siblings.isOriginalAside = true;
        if (parts::IsRejection(row.part) && row.state != PacsState::Withdrawn)
            siblings.rejected.insert(parts::ValueOf(row.part),
                                     row.state != PacsState::Waiting && row.state != PacsState::SetAside);
    }
    return siblings;
}

void Ledger::PutBehindOriginal(const PacsEntry& entry)
{
    PacsEntry original = entry;
    original.part = QString::fromUtf16(parts::Original);
    m_database->Run(
        {u"INSERT OR IGNORE INTO picture ( id, chart, ymd, etc, imageExt, number, doctor, takenAt, isDoubtful, part ) "
         "SELECT id, chart, ymd, etc, imageExt, number, doctor, takenAt, isDoubtful, '"_s +
             original.part + u"' FROM picture"_s + Where(entry),
         u"UPDATE picture SET "_s + QString::fromUtf16(NewTurn) + u", notBefore = 0, "_s + Is(PacsState::Waiting) +
             Where(original),
         u"UPDATE picture SET "_s + QString::fromUtf16(NewTurn) + u", "_s + Is(PacsState::Waiting) + Where(entry) +
             u" AND revision = %1"_s.arg(entry.revision)});
}

void Ledger::DropRejection(const PacsEntry& entry, const QString& uid)
{
    PacsEntry rejection = entry;
    rejection.part = parts::RejectionOf(uid);
    m_database->Run({u"UPDATE picture SET revision = revision + 1, "_s + Is(PacsState::Withdrawn) + Where(rejection)});
}

void Ledger::TakeFound(const PacsEntry& entry, const QList<DicomReference>& found)
{
    m_database->Together([&] {
        LedgerChange change(*m_database, m_rules);
        for (const DicomReference& object : found) {
            PacsEntry stored = entry;
            stored.part.clear();
            stored.text.clear();
            stored.uid = object.uid;
            stored.classUid = object.classUid;
            change.Reject(stored);
        }
        m_database->Run({u"DELETE FROM picture"_s + Where(entry)});
    });
}

std::optional<PacsEntry> Ledger::RawMovie()
{
    const QList<PacsEntry> movies = queue_rows::Entries(
        *m_database, Is(PacsState::Waiting) + u" AND "_s + parts::IsRawMovie() +
                         u" AND notBefore <= %1 ORDER BY place LIMIT 1"_s.arg(QDateTime::currentMSecsSinceEpoch()));
    return movies.isEmpty() ? std::nullopt : std::optional(movies.first());
}

void Ledger::MovieIsReady(const PacsEntry& entry, const QString& facts)
{
    m_database->Run({Statement(u"UPDATE picture SET text = '")
                         .Value(facts)
                         .Piece(u"', tries = 0, reason = ''")
                         .Piece(Where(entry))
                         .Then(u" AND revision = ", entry.revision)
                         .Text()});
}

QStringList Ledger::NeededFiles()
{
    QStringList ids;
    for (const QVariantList& row :
         m_database->Rows(u"SELECT id FROM picture WHERE ( part LIKE 'movie:%' OR part LIKE 'report:%' ) AND state IN "
                          "( 'held', 'waiting', 'underway', 'aside' )"_s))
        ids << row.at(0).toString();
    return ids;
}
