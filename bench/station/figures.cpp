#include "figures.h"

#include "contracts/fpSpread.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QTableView>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// Large values have no need of digits behind the point.
int DigitsOf(double value)
{
    return value >= 100 ? 0 : value >= 1 ? 1 : 3;
}

QString ValueText(double value, const QString& unit)
{
    return QString::number(value, 'f', DigitsOf(value)) + u' ' + unit;
}

void WriteJson(const QString& what, const QString& figure, const QString& reference, const std::optional<Limit>& limit)
{
    QFile file(qEnvironmentVariable("BENCH_FIGURES"));
    if (file.fileName().isEmpty() || !file.open(QIODevice::WriteOnly | QIODevice::Append))
        return;
    QJsonObject line{{u"what"_s, what.trimmed()}, {u"figure"_s, figure}, {u"beside"_s, reference}};
    if (limit) {
        line[u"value"_s] = limit->value;
        line[u"unit"_s] = limit->unit;
        if (limit->atMost > 0)
            line[u"atMost"_s] = limit->atMost;
    }
    file.write(QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n');
}

} // namespace

void PrintFigure(const QString& what, const QString& figure, const QString& reference,
                 const std::optional<Limit>& limit)
{
    const bool isMissed = limit && limit->atMost > 0 && limit->value > limit->atMost;
    const QString missed = isMissed ? u" MISSED"_s : QString();
    std::printf("%-56s %-16s %s%s\n", qPrintable(what), qPrintable(figure), qPrintable(reference), qPrintable(missed));
    std::fflush(stdout);
    WriteJson(what, figure, reference, limit);
}

void PrintRatio(const QString& what, double ms, const QString& reference, double referenceMs,
                std::optional<double> atMost)
{
    const double ratio = ms / referenceMs;
    QString beside = u"%1 x %2, %3"_s.arg(ratio, 0, 'f', 2).arg(reference, ValueText(referenceMs, u"ms"_s));
    if (atMost)
        beside += u" (at most %1)"_s.arg(*atMost);
    PrintFigure(what, ValueText(ms, u"ms"_s), beside, Limit{ratio, atMost.value_or(0), u"x"_s});
}

void PrintLimited(const QString& what, double value, const QString& unit, double atMost, const QString& reference)
{
    const QString before = reference.isEmpty() ? QString() : reference + u", "_s;
    PrintFigure(what, ValueText(value, unit), before + u"at most %1 %2"_s.arg(atMost).arg(unit),
                Limit{value, atMost, unit});
}

void ChoosePlatform()
{
    const auto isSet = [](const char* name) { return !qEnvironmentVariableIsEmpty(name); };
    if (!isSet("QT_QPA_PLATFORM") && !isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
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
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { Beat(); });
    m_timer.start(1);
    Forget();
}

void Heartbeat::Beat()
{
    const double now = NowMs();
    m_longest = qMax(m_longest, now - m_last);
    m_last = now;
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
