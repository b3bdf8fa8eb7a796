#pragma once

#include "contracts/ClientSetup.h"
#include "contracts/MovieEncoder.h"
#include "frame/WorkThread.h"
#include "sender/Ledger.h"

#include <QElapsedTimer>
#include <QObject>

#include <exception>
#include <stop_token>

/// Makes the queue's movies ready for the server, one after the other, while no picture from a device is shown on this
/// machine. Pictures go on meanwhile.
class MovieMaking : public QObject
{
    Q_OBJECT

public:
    MovieMaking(Ledger& ledger, const ClientSetupRecord& setup) : m_ledger(ledger), m_setup(setup) {}

    /// Begins with what is due, and gives up what is under way once a picture is shown. May throw PlatformError.
    void Look();
    /// Gives up what is under way.
    void End();

private:
    void Answer(const PacsEntry& entry, const EncodedMovie& movie, const std::exception_ptr& fault);

    Ledger& m_ledger;
    const ClientSetupRecord& m_setup;
    WorkThread m_work;
    std::stop_source m_stop;
    bool m_isUnderWay = false;
};
