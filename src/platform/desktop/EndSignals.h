#pragma once

#include <QObject>

#include <functional>

/// Hears the signals by which a system asks a program to end: SIGTERM, SIGINT and SIGHUP. Their handler only writes
/// into a pipe; what is to be done is done by the event loop. One object at a time.
class EndSignals : public QObject
{
    Q_OBJECT

public:
    explicit EndSignals(const std::function<void()>& arrived);
    ~EndSignals() override;

private:
    void Listen(bool on) const;

    int m_readEnd = -1;
};
