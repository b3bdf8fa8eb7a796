#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

/// The record of access (table `ca_log`) as the administrator reads it, on the database that `Connection` reaches. All
/// throw PlatformError, which tells whose account may not read the table, or that it isn't there.
namespace access_log {

struct Entry
{
    qint64 no = 0; ///< In the order of arrival.
    QString id;
    QString at;      ///< The computer's time: `yyyy-mm-ddThh:mm:ss.zzz+hh:mm`.
    QString arrived; ///< The database's.
    QString computer;
    QString user; ///< Linux user; "root (kim)" for one behind sudo.
    QString program;
    QString run;  ///< Identity of the program's run,
    int seq = 0;  ///< in which it is the act of that number.
    QString kind; ///< Word of the table; see `KindText`.
    bool isRefused = false;
    QString chart;
    QString ymd;
    QString etc;
    int number = 0; ///< Of the picture; 0 without one.
    QString picture;
    QString detail;
    QString before; ///< Text that stood there before; null without one.
};

/// Which entries are meant; what is empty counts for all.
struct Filter
{
    QString chart;
    QString from;  ///< `yyyy-mm-dd`, the first day,
    QString until; ///< and the first one that isn't meant any more.
    QString user;  ///< Linux user, in front of sudo or behind it.
    QStringList kinds;
    bool hasBefore = false; ///< Only those with a text that stood there before.
};

/// Gives them one by one in the order of arrival; holds no more than a page of them.
void Read(const Filter& filter, const std::function<void(const Entry&)>& take);

/// Words of the table, in the order in which the guide has them.
QStringList Kinds();
/// The kind in Korean; a word that this release doesn't know stands for itself.
QString KindText(const QString& kind);

/// Acts of a program's run that aren't there, though later or earlier ones are.
struct RunGap
{
    QString run;
    QString computer;
    QString program;
    QString from; ///< Times of the first and the last act that are there.
    QString until;
    qint64 missing = 0;
};
/// Of the runs that have acts on the filter's days; nothing else of it counts. What a retired year has taken of a run
/// isn't told.
QList<RunGap> RunGaps(const Filter& filter);

/// Numbers of arrival that nothing has, between two that something has.
struct NumberGap
{
    qint64 first = 0;
    qint64 last = 0;
};
/// On the filter's days, the first ones of them; `count` is how many there are. A repeated act and a broken-off one
/// leave such a number out too.
QList<NumberGap> NumberGaps(const Filter& filter, qint64& count);

/// Throws PlatformError with what the administrator can do when the table can't be read.
void CheckReadable(bool isServer);

} // namespace access_log
