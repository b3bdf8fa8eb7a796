#include "figures.h"

#include "contracts/fpSpread.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringList>
#include <QTableView>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sys/resource.h>
#include <unistd.h>

void PrintFigure(const QString& what, const QString& figure, const QString& reference)
{
    std::printf("%-52s %-22s %s\n", qPrintable(what), qPrintable(figure), qPrintable(reference));
    std::fflush(stdout);
}

double Median(QList<double> values)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    const qsizetype middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double ResidentMb()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const double pages = QString::fromLatin1(statm.readAll()).split(QLatin1Char(' ')).value(1).toDouble();
    return pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}

void ForgetPeak()
{
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
}

double PeakMb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    return text.mid(text.indexOf("VmHWM:") + 6, 20).simplified().split(' ').first().toDouble() / 1024;
}

double ChildrenPeakMb()
{
    rusage used = {};
    getrusage(RUSAGE_CHILDREN, &used);
    return static_cast<double>(used.ru_maxrss) / 1024;
}

double NowMs()
{
    using namespace std::chrono;
    return duration<double, std::milli>(steady_clock::now().time_since_epoch()).count();
}

Heartbeat::Heartbeat()
{
    m_timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
        const double now = NowMs();
        m_longest = qMax(m_longest, now - m_last);
        m_last = now;
    });
    m_timer.start(1);
    Forget();
}

void Heartbeat::Forget()
{
    m_longest = 0;
    m_last = NowMs();
}

bool ServeUntil(const std::function<bool()>& done, int limitMs)
{
    bool isOver = false;
    QTimer limit;
    limit.setTimerType(Qt::PreciseTimer);
    limit.setSingleShot(true);
    QObject::connect(&limit, &QTimer::timeout, &limit, [&isOver] { isOver = true; });
    limit.start(limitMs);
    while (!done() && !isOver)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return done();
}

Painted::Painted(fpSpread& grid)
{
    grid.findChild<QTableView*>()->viewport()->installEventFilter(this);
}

bool Painted::eventFilter(QObject* /*watched*/, QEvent* event)
{
    seen = seen || event->type() == QEvent::Paint;
    return false;
}
