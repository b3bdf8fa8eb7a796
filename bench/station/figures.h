#pragma once

#include <QList>
#include <QString>
#include <QTimer>

#include <functional>
#include <optional>

class fpSpread;

/// What a figure is to stay within.
struct Limit
{
    double value = 0;
    double atMost = 0;
    QString unit; ///< "x" for a ratio to a reference of the same run, else of the value itself.
};

/// One line of the table: what, figure, and the reference of the same run that it is held against. Where BENCH_FIGURES
/// names a file, the line goes there too, as JSON.
void PrintFigure(const QString& what, const QString& figure, const QString& reference = {},
                 const std::optional<Limit>& limit = {});
/// A time beside a reference of the same run, of which it may take `atMost` times as long.
void PrintRatio(const QString& what, double ms, const QString& reference, double referenceMs,
                std::optional<double> atMost = {});
/// A value that has a limit, such as 12.3 "ms".
void PrintLimited(const QString& what, double value, const QString& unit, double atMost, const QString& reference = {});
/// Where nothing says how to show forms, they show nowhere.
void ChoosePlatform();

double Median(QList<double> values);

/// Resident memory of this process in megabytes.
double ResidentMb();

/// Forgets the most memory that this process ever had.
void ForgetPeak();
/// The most resident memory since then, in megabytes.
double PeakMb();
/// The most that any child that has ended ever had.
double ChildrenPeakMb();

/// Time by a monotonic clock, in milliseconds.
double NowMs();

/// Beats each millisecond that events are served, also by a handler that waits: the longest pause between two beats is
/// how long an event had to wait.
class Heartbeat
{
public:
    Heartbeat();
    void Forget();
    /// As its timer does; for the pause that hasn't ended.
    void Beat();
    /// The longest pause since then, in milliseconds.
    double LongestMs() const { return m_longest; }

private:
    QTimer m_timer;
    double m_last = 0;
    double m_longest = 0;
};

/// Hears when the cells of a grid are painted.
class Painted : public QObject
{
public:
    explicit Painted(fpSpread& grid);
    bool eventFilter(QObject* watched, QEvent* event) override;

    bool seen = false;
};

/// Serves events as they come until `done` holds; false when the time runs out first.
bool ServeUntil(const std::function<bool()>& done, int limitMs);

int BenchStalls();
int BenchSpool();
int BenchStill();
int BenchThumbnails();
int BenchFindings();
int BenchLarge();
int BenchSheet();
int BenchSheetMemory();
int BenchBombs();
int BenchImport();
int BenchDelete();
int BenchStart(const QString& mode);
int BenchPacs();
int BenchMemory(const QString& mode);
