#pragma once

#include "support/testing.h"

#include <QProcess>

#include <csignal>
#include <sys/prctl.h>

/// A display, a window manager and an input method that composes Hangul, all of this test program's own. Made before
/// the application object, which finds them by its environment; ended with it.
class HangulDesktop
{
public:
    HangulDesktop()
    {
        qputenv("HOME", m_home.path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", m_home.filePath(QStringLiteral("config")).toLocal8Bit());
        qputenv("XDG_RUNTIME_DIR", m_home.path().toLocal8Bit());
        qunsetenv("WAYLAND_DISPLAY");
        const QByteArray display =
            FirstLine(m_display, QStringLiteral("Xvfb"),
                      {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                       QStringLiteral("0"), QStringLiteral("1280x800x24"), QStringLiteral("-noreset")});
        qputenv("DISPLAY", ':' + display);
        qputenv("DBUS_SESSION_BUS_ADDRESS", FirstLine(m_bus, QStringLiteral("dbus-daemon"),
                                                      {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                       QStringLiteral("--print-address=1")}));
        qputenv("QT_QPA_PLATFORM", "xcb");
        qputenv("QT_IM_MODULE", "ibus");
        // The engine would begin with Latin letters.
        qputenv("GSETTINGS_BACKEND", "keyfile");
        QDir(m_home.path()).mkpath(QStringLiteral("config/glib-2.0/settings"));
        QFile settings(m_home.filePath(QStringLiteral("config/glib-2.0/settings/keyfile")));
        if (!settings.open(QIODevice::WriteOnly) ||
            settings.write("[org/freedesktop/ibus/engine/hangul]\ninitial-input-mode='hangul'\n") < 0)
            qFatal("the settings of the input method can't be written");
        settings.close();
        Start(m_manager, QStringLiteral("openbox"), {});
        Start(m_method, QStringLiteral("ibus-daemon"),
              {QStringLiteral("--replace"), QStringLiteral("--panel=disable")});
        // By a file in there the application finds it.
        const QDir addresses(m_home.filePath(QStringLiteral("config/ibus/bus")));
        QDeadlineTimer patience(20000);
        while (addresses.entryList(QDir::Files).isEmpty()) {
            if (patience.hasExpired() || m_method.waitForFinished(20))
                qFatal("the input method doesn't start");
        }
    }

    ~HangulDesktop()
    {
        for (QProcess* process : {&m_method, &m_manager, &m_bus, &m_display}) {
            process->kill();
            process->waitForFinished();
        }
    }

    /// The engine composes Hangul from here on. False with the reason when it isn't there.
    static bool ChooseHangul(QWidget& window)
    {
        const QString engine = QStringLiteral("hangul");
        const auto answer = [](const QStringList& arguments) {
            QProcess ask;
            ask.start(QStringLiteral("ibus"), arguments);
            ask.waitForFinished();
            return ask.readAllStandardOutput().trimmed();
        };
        // Chosen again it would begin anew, a moment later, and give up the syllable that is typed meanwhile.
        const auto chosen = [&] {
            if (answer({QStringLiteral("engine")}) == engine.toUtf8())
                return true;
            answer({QStringLiteral("engine"), engine});
            return false;
        };
        window.activateWindow();
        return QTest::qWaitForWindowActive(&window) && QTest::qWaitFor(chosen, 20000);
    }

    /// Keys by their names, 90 ms apart, as a person types.
    static void Type(const QString& keys)
    {
        Drive(QStringList{QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("90")} +
              keys.split(u' ', Qt::SkipEmptyParts));
    }

    static void Click(const QWidget& widget, QPoint at = {}, int times = 1)
    {
        const QPoint place = widget.mapToGlobal(at.isNull() ? widget.rect().center() : at);
        Drive({QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y()),
               QStringLiteral("click"), QStringLiteral("--repeat"), QString::number(times), QStringLiteral("--delay"),
               QStringLiteral("60"), QStringLiteral("1")});
    }

private:
    static void Start(QProcess& process, const QString& program, const QStringList& arguments)
    {
        process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
        process.setStandardErrorFile(QProcess::nullDevice());
        process.start(program, arguments);
        if (!process.waitForStarted())
            qFatal("%s is not installed", qPrintable(program));
    }

    static QByteArray FirstLine(QProcess& process, const QString& program, const QStringList& arguments)
    {
        Start(process, program, arguments);
        while (!process.canReadLine()) {
            if (!process.waitForReadyRead(20000))
                qFatal("%s doesn't start", qPrintable(program));
        }
        return process.readLine().trimmed();
    }

    static void Drive(const QStringList& arguments)
    {
        QProcess hand;
        hand.start(QStringLiteral("xdotool"), arguments);
        if (!QTest::qWaitFor([&] { return hand.state() == QProcess::NotRunning; }, 30000))
            qFatal("xdotool doesn't end");
    }

    QTemporaryDir m_home;
    QProcess m_display;
    QProcess m_bus;
    QProcess m_manager;
    QProcess m_method;
};
