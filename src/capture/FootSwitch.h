#pragma once

#include <QObject>
#include <QTimer>

#include <exception>
#include <functional>

class MSComm;

/// The foot switch on a serial port: any byte is a press, and a press takes one still. What the switch sends while the
/// still's file is written, and in the pause after it, is lost with the closing of the port.
class FootSwitch : public QObject
{
    Q_OBJECT

public:
    /// Told that the still's file stands, or why it doesn't.
    using Filed = std::function<void(std::exception_ptr fault)>;
    /// Takes the still, and calls `filed` later; or throws PlatformError, and doesn't call it.
    using Press = std::function<void(const Filed& filed)>;

    FootSwitch(MSComm& port, Press press);

    /// Opens the port of the clinic's setup unless it is open. Nothing is said when that fails: the switch is then dead
    /// until the next call.
    void OpenFootSwitchPort();
    /// Closes the port for good.
    void Close();

private:
    void OnComm();
    void Pause(std::exception_ptr fault);
    void Rearm();

    MSComm& m_port;
    const Press m_press;
    QTimer m_pause;
    QTimer m_patience;
    int m_presses = 0;     ///< Tells a late answer from the present press's.
    bool m_isBusy = false; ///< From the press to the end of the pause.
    bool m_isClosed = false;
    std::exception_ptr m_fault; ///< Of the press.
};
