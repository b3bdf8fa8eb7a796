#pragma once

#include "filing/LeftoverNumbers.h"

#include <QObject>
#include <QStringList>

class StillFiling;

/// Brings to their end the stills that dead stations of this machine were filing: in sections of a
/// year, and wherever their lists say.
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
    };

    void Write(const QList<LeftoverNumber>& numbers);
    void Submit(const LeftoverNumber& number, const std::shared_ptr<Count>& count);
    void Tell(const Count& count);

    StillFiling& m_filing;
    LeftoverNumbers m_numbers;
    bool m_ended = false;
};
