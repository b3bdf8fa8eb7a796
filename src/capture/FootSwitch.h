#pragma once

#include <QObject>

#include <functional>

class MSComm;

/// The foot switch on a serial port: any byte is a press, and a press takes one still. What the switch sends while the
/// still is taken, and in the pause after it, is lost with the closing of the port.
class FootSwitch : public QObject
{
    Q_OBJECT

public:
    /// `press` takes the still.
    FootSwitch(MSComm& port, std::function<void()> press);

    /// Opens the port of the clinic's setup unless it is open. Nothing is said when that fails: the switch is then dead
    /// until the next call.
    void OpenFootSwitchPort();
    /// Closes the port for good.
    void Close();

private:
    void OnComm();
    void Pause();

    MSComm& m_port;
    const std::function<void()> m_press;
    bool m_isBusy = false;
    bool m_isClosed = false;
};
