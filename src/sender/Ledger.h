#pragma once

#include "pacs/PacsLine.h"

#include <QDateTime>
#include <QList>

#include <memory>

class LocalDatabase;

/// The sender's own hand on its queue: it alone changes what becomes of a picture. Each call is one transaction.
class Ledger
{
public:
    /// Opens the queue. One that can't be read is put aside under another name, and a new one made. What an earlier
    /// sender had under way may be at the server. Throws PlatformError.
    Ledger();
    ~Ledger();
    Ledger(const Ledger&) = delete;
    Ledger& operator=(const Ledger&) = delete;

    /// What lines want of the sender itself.
    struct Orders
    {
        bool isRetry = false;
        QString setup; ///< What the setup is known by now; empty when nobody has said.
    };
    /// Takes all lines. With `sendsEach` no visit needs to be stored.
    Orders TakeLines(bool sendsEach);

    /// A visit of which the rows tell what belongs to it.
    struct VisitToAsk
    {
        QString chart;
        QString ymd;
        QString etc;
        QString doctor;
        QString imageExt;
    };
    QList<VisitToAsk> VisitsToAsk();
    /// Visits of which pictures wait for somebody to store them, the latest first, as many as `most` says.
    QList<VisitToAsk> HeldVisits(int most);
    /// Somebody has: at another station.
    void Release(const VisitToAsk& visit);
    /// Those of its pictures that aren't known go too.
    void TakeNumbers(const VisitToAsk& visit, const QList<int>& numbers);
    /// An earlier release has sent pictures of the visit.
    bool WasSent(const PacsEntry& entry);
    void MarkSent(const PacsEntry& entry);

    /// The first that wait and needn't wait for themselves any more.
    QList<PacsEntry> Due(int most);
    int Waiting();
    /// Why the first of them waits for itself; empty when it doesn't.
    QString FirstReason();
    /// How many of those that wait don't do so for that reason.
    int WaitingBut(const QString& reason);
    /// From here on the server may have them.
    void Begin(const QList<PacsEntry>& entries);
    /// It is still to go, and as it was when it was begun.
    bool IsStill(const PacsEntry& entry);

    /// What became of one that was begun. A line that came meanwhile stands above it.
    void Sent(const PacsEntry& entry, const QString& uid);
    void SetAside(const PacsEntry& entry, const QString& reason);
    /// There is no such picture.
    void Gone(const PacsEntry& entry);
    /// It waits for itself for that time. `isDoubtful`: the server may have it.
    void Later(const PacsEntry& entry, const QString& reason, int waitMs, bool isDoubtful);
    /// Those that were begun and have no end wait again.
    void PutBack(bool areDoubtful);

    void Tell(const QString& name, const QString& value);
    /// What is older than a year, and not on its way, is forgotten.
    void ForgetOld(const QDate& today);

private:
    class Change;
    void Open();
    QList<VisitToAsk> Visits(const QString& rest);
    void End(const PacsEntry& entry, PacsState state, const QString& reason);

    std::unique_ptr<LocalDatabase> m_database;
};
