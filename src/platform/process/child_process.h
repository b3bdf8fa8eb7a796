#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>
#include <stop_token>

/// How much a program that is run beside the station may take. The defaults suit a call that answers at once.
struct ChildLimits
{
    qint64 memoryBytes = qint64(512) << 20; ///< Data of its own; what is mapped from files doesn't count.
    /// That it prints, in both channels together. A line counts `LineCost` more than it has: what it takes to keep one.
    qint64 outputBytes = qint64(1) << 20;
    int silenceMs = 30'000; ///< Without a byte in either channel.
    int totalMs = 120'000;  ///< From its start to its end, whatever it says.
};

inline constexpr qint64 LineCost = 64;

/// What became of a program that was run to its end.
struct ChildResult
{
    bool succeeded = false; ///< It ended by itself, with 0.
    QByteArray output;      ///< What it printed, as far as the limit lets it.
    QByteArray errors;      ///< The same of the other channel.
    QString fault;          ///< What went wrong with the program itself, for the operator; empty when nothing did.
};

/// Path of a program by its name, also of those that only an administrator's search path names; empty when it isn't
/// installed.
QString ProgramPath(const QString& program);

/// Runs the program in that folder as a child process without a shell, and waits for it. It ends when a limit is
/// reached, when a stop is asked for, and with this thread. Blocks the calling thread, but takes no events.
ChildResult RunChild(const QString& program, const QStringList& arguments, const QString& folder,
                     const ChildLimits& limits, const std::stop_token& stop = {});

/// The lines of what a program printed, empty ones left out.
QStringList LinesOf(const QByteArray& printed);

// For a process that isn't waited for, or whose output isn't text:

/// Leaves the limit of memory to the program.
inline constexpr qint64 NoMemoryLimit = 0;

/// Before a start: the child leads a group of its own without a terminal; gets its messages in English and UTF-8, none
/// of this process's descriptors but its output, and nothing to read unless `standardInput` is a descriptor; keeps to
/// the memory, leaves no core file, and is killed when the *thread* that starts it ends.
void PrepareChild(QProcess& process, qint64 memoryBytes, int standardInput = -1);

/// Kills the child and its group. What they still print is thrown away.
void KillChild(QProcess& process);

using OutputTaker = std::function<void(QProcess::ProcessChannel channel, const QByteArray& more)>;

/// Hands over what the process prints as it comes, in the event loop as in the functions that wait, until `context` is
/// gone. Behind `outputBytes`, counted as in `ChildLimits`, nothing more is handed over: the child is killed, and
/// `tooMuch` is called once.
void TakeOutput(QProcess& process, const QObject* context, qint64 outputBytes, const OutputTaker& take,
                const std::function<void()>& tooMuch);

/// Sentences for the operator; %1 is the program.
inline constexpr char16_t SilentChildText[] = u"%1이(가) 응답하지 않습니다.!!";
inline constexpr char16_t EndlessChildText[] = u"%1이(가) 정해진 시간 안에 끝나지 않습니다.!!";
inline constexpr char16_t BabblingChildText[] = u"%1이(가) 끝없이 출력하여 중단하였습니다.!!";
inline constexpr char16_t CrashedChildText[] = u"%1이(가) 도중에 끝났습니다.!!";
inline constexpr char16_t UnstartedChildText[] = u"%1을(를) 실행할 수 없습니다.!!";
