#pragma once

#include "filing/LeftoverNumbers.h"

#include <QObject>
#include <QStringList>

class StillFiling;

/// Brings to their end the stills that dead stations of this machine were filing, in sections of a year and wherever
/// their lists say, and the pictures that were coming back from the Log folder.
class Leftovers : public QObject
{
    Q_OBJECT

public:
    explicit Leftovers(StillFiling& filing);

    struct Settled
    {
        QList<Visit> visits; ///< Of each picture whose rows are in now.
        QStringList tidings; ///< For the operator.
    };

    /// Begins to look for them: in these sections of a year, and wherever the lists say. `AreSettled` follows once,
    /// unless it is ended before.
    void Settle(const QString& yearFolder, const QStringList& sections);
    /// No row is written any more.
    void End() { m_ended = true; }

Q_SIGNALS:
    void AreSettled(const Leftovers::Settled& settled);

private:
    struct Count
    {
        bool isAway = false; ///< The rest keeps its claims, and a later start comes back to it.
        QList<Visit> settled;
        QList<Visit> restored;
        QStringList tidings;
    };
    using CountPointer = std::shared_ptr<Count>;

    void Write(const QList<LeftoverNumber>& numbers);
    void Submit(const LeftoverNumber& number, const CountPointer& count);
    void Restore(const RestoreJob& job, const CountPointer& count);
    void AnswerRestore(const RestoreJob& job, int number, const std::exception_ptr& fault, Count& count);
    void Tell(const Count& count);

    StillFiling& m_filing;
    LeftoverNumbers m_numbers;
    bool m_ended = false;
};
