#include "pacs/service_rows.h"

#include "contracts/LocalDatabase.h"
#include "identifiers/dicom_uids.h"
#include "pacs/queue_rows.h"
#include "records/local_tables.h"
#include "records/Statement.h"
#include "records/words.h"

#include <QHash>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

const std::array<QString, 4> CommitmentStates{u"waiting"_s, u"asked"_s, u"resent"_s, u"failed"_s};
const QString CommitmentColumns = u"uid, classUid, chart, ymd, etc, number, transactionUid, state, reason, wasResent"_s;
/// Of what is to be asked for, or asked again: the time of both is `notBefore`.
const QString ToAsk = u"state IN ( 'waiting', 'asked' )"_s;

QString Uid(const Statement& before, const QString& uid)
{
    return Statement(before).Quoted(u" WHERE uid = '", uid).Text();
}

} // namespace

QList<service_rows::Commitment> service_rows::Commitments(LocalDatabase& queue, const QString& condition)
{
    QList<Commitment> commitments;
    if (!HasTable(queue, u"commitment"))
        return commitments;
    for (const QVariantList& row :
         queue.Rows(u"SELECT %1 FROM commitment WHERE "_s.arg(CommitmentColumns) + condition)) {
        const auto text = [&row](qsizetype column) { return row.at(column).toString(); };
        commitments.append({{text(1), text(0)},
                            text(2),
                            text(3),
                            text(4),
                            row.at(5).toInt(),
                            text(6),
                            FromWord<CommitmentState>(CommitmentStates, text(7)),
                            text(8),
                            row.at(9).toInt() != 0});
    }
    return commitments;
}

QList<service_rows::Commitment> service_rows::DueCommitments(LocalDatabase& queue, int most)
{
    return Commitments(queue, ToAsk + u" AND notBefore <= %1 ORDER BY ymd, chart, number LIMIT %2"_s
                                          .arg(QDateTime::currentMSecsSinceEpoch())
                                          .arg(most));
}

void service_rows::GatherSent(LocalDatabase& queue, const QString& since)
{
    // An earlier release has told no class: it knew but one.
    queue.Run({u"INSERT OR IGNORE INTO commitment ( uid, classUid, chart, ymd, etc, number, state ) SELECT uid, "
               "CASE WHEN classUid = '' THEN '%1' ELSE classUid END, chart, ymd, etc, number, 'waiting' FROM picture "
               "WHERE uid <> '' AND "_s.arg(ClassUidOf(DicomModality::Endoscopy)) +
                   queue_rows::Is(PacsState::Sent) + Statement().Quoted(u" AND sentAt >= '", since).Text(),
               // It came to the server anew.
               u"UPDATE commitment SET state = 'waiting', notBefore = 0 WHERE state = 'resent' AND EXISTS ( SELECT * "
               "FROM picture WHERE picture.uid = commitment.uid AND picture."_s +
                   queue_rows::Is(PacsState::Sent) + u" )"_s});
}

bool service_rows::AreAsked(LocalDatabase& queue, qint64 time)
{
    return !queue.Rows(u"SELECT uid FROM commitment WHERE state = 'asked' AND notBefore > %1 LIMIT 1"_s.arg(time))
                .isEmpty();
}

void service_rows::BeginTransaction(LocalDatabase& queue, const QList<Commitment>& of, const QString& transaction)
{
    QStringList statements;
    for (const Commitment& each : of)
        statements << Uid(
            Statement(u"UPDATE commitment SET state = 'waiting', transactionUid = '").Value(transaction).Piece(u"'"),
            each.object.uid);
    queue.Run(statements);
}

void service_rows::TransactionIsAsked(LocalDatabase& queue, const QString& transaction, qint64 askAgainAt)
{
    queue.Run(
        {Statement(u"UPDATE commitment SET state = 'asked', reason = '', notBefore = %1 WHERE state = 'waiting'"_s.arg(
                       askAgainAt))
             .Quoted(u" AND transactionUid = '", transaction)
             .Text()});
}

void service_rows::PutOff(LocalDatabase& queue, const QString& transaction, const QString& reason, qint64 notBefore)
{
    queue.Run({Statement(u"UPDATE commitment SET reason = '")
                   .Value(reason)
                   .Piece(u"', notBefore = %1 WHERE state = 'waiting'"_s.arg(notBefore))
                   .Quoted(u" AND transactionUid = '", transaction)
                   .Text()});
}

service_rows::Reported service_rows::TakeReport(LocalDatabase& queue, const DicomCommitment& report)
{
    Reported reported;
    queue.Together([&] {
        reported = {};
        QHash<QString, Commitment> awaited;
        for (const Commitment& each :
             Commitments(queue, Statement().Quoted(u"transactionUid = '", report.transaction).Text()))
            awaited.insert(each.object.uid, each);
        reported.isOurs = !awaited.isEmpty();
        for (const DicomReference& object : report.committed) {
            const auto found = awaited.constFind(object.uid);
            if (found == awaited.cend())
                continue;
            reported.committed.append(*found);
            queue.Run({Uid(Statement(u"UPDATE picture SET "_s + queue_rows::Is(PacsState::Committed)), object.uid) +
                           u" AND "_s + queue_rows::Is(PacsState::Sent),
                       Uid(Statement(u"DELETE FROM commitment"), object.uid)});
        }
        for (const DicomCommitment::Failed& failed : report.failed) {
            const auto found = awaited.constFind(failed.object.uid);
            if (found == awaited.cend())
                continue;
            Commitment commitment = *found;
            commitment.reason = ReasonOf(failed.reason);
            reported.failed.append(commitment);
            const QString& uid = commitment.object.uid;
            // Once more, as if it had never gone; what has been withdrawn, or is another one by now, doesn't go.
            if (!commitment.wasResent)
                queue.Run({Uid(Statement(u"UPDATE picture SET revision = revision + 1, notBefore = 0, tries = 0, "
                                         "isDoubtful = 0, uid = '', reason = '")
                                   .Value(commitment.reason)
                                   .Piece(u"', "_s + queue_rows::Is(PacsState::Waiting)),
                               uid) +
                           u" AND "_s + queue_rows::Is(PacsState::Sent)});
            queue.Run({Uid(Statement(u"UPDATE commitment SET wasResent = 1, transactionUid = '', reason = '")
                               .Value(commitment.reason)
                               .Then(u"', state = '", commitment.wasResent ? u"failed"_s : u"resent"_s)
                               .Piece(u"'"),
                           uid)});
        }
    });
    return reported;
}

QString service_rows::ReasonOf(int failure)
{
    struct Meaning
    {
        int reason;
        const char16_t* text;
    };
    constexpr std::array Meanings{
        Meaning{0x0110, u"서버가 처리하지 못함"},      Meaning{0x0112, u"서버에 그 그림이 없음"},
        Meaning{0x0213, u"서버에 자리가 없음"},        Meaning{0x0122, u"서버가 그런 그림을 받지 않음"},
        Meaning{0x0119, u"서버의 그림과 종류가 다름"}, Meaning{0x0131, u"서버가 같은 물음을 이미 받음"},
    };
    const auto found = std::ranges::find(Meanings, failure, &Meaning::reason);
    const QString hex = QString::number(failure, 16).toUpper().rightJustified(4, u'0');
    return (found == Meanings.end() ? u"서버가 까닭을 알리지 않음"_s : QString::fromUtf16(found->text)) +
           u" (%1)"_s.arg(hex);
}
