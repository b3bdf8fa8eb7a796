#pragma once

#include "pacs/PacsLine.h"
#include "sender/Ledger.h"

#include <optional>

/// What the lines of one transaction change in the queue.
class LedgerChange
{
public:
    LedgerChange(LocalDatabase& queue, const Ledger::Rules& rules) : m_queue(queue), m_rules(rules) {}

    void Take(const PacsLine& line, Ledger::Orders& orders);
    /// What the server has of a deleted one is to be rejected there, once. Nothing without that rule.
    void Reject(const PacsEntry& entry);

private:
    void Run(const QString& statement);
    std::optional<PacsEntry> Find(const PacsLine& line);
    bool Goes(const PacsLine& line);
    void Insert(const PacsLine& line, PacsState state, const QDateTime& takenAt);
    void InsertRejection(const PacsEntry& entry, const QString& uid, const QString& classUid);
    void Send(const PacsLine& line);
    void MarkChanged(const PacsLine& line);
    void Withdraw(const PacsLine& line);
    void Keep(const PacsLine& line);
    void Store(const PacsLine& line);

    LocalDatabase& m_queue;
    const Ledger::Rules m_rules;
};
