#pragma once

#include <QStringList>

#include <functional>
#include <optional>

class Report;
class TerminalOutput;

/// How the administrator's program ends.
enum ExitCode : int {
    AllWell = 0,
    Found = 1,       ///< Something is wrong, or was refused.
    UsedWrongly = 2, ///< The command line can't be understood.
    CantWork = 3,    ///< Setup, database or capture root aren't there, or have given out.
};

/// What the program's main file knows and the commands need.
struct AdminSurroundings
{
    QString version;
    bool showsProgress = false; ///< Somebody looks at standard error.
    /// The next line that somebody types, without its end; nothing at the end of the input.
    std::function<std::optional<QString>()> readLine;
    /// Program folders of other users that can be looked into.
    std::function<QStringList()> foldersOfOthers;
    /// Asks whoever sits at the terminal; nothing when nobody does.
    std::function<std::optional<bool>(const QString& question)> ask;
    /// The same for a word that isn't shown; empty when nobody sits there.
    std::function<QString(const QString& question)> askSecret;
};
extern AdminSurroundings Surroundings;

/// Runs the command that the arguments name, the program's own name not among them. What it finds goes to `out`, how
/// the program is used, faults and progress to standard error. Gives an `ExitCode`.
int RunCommand(const QStringList& arguments, TerminalOutput& out);

/// The commands.

/// `check`: what the station needs on this machine, one line each, right or wrong with what to do. Reads the setup
/// itself. Gives an `ExitCode`.
int CheckStation(Report& report);

/// Pictures of this machine that wait for the clinic's server, or that it has refused. Each gives an `ExitCode`;
/// `Found` as long as there are any. A station may run beside them.

/// Shows them, with whose they are and why.
int ListPacs(Report& report);
/// Has this user's sender try it all at once, also what was refused, and waits for that.
int RetryPacs(TerminalOutput& out);
/// Forgets what was refused. The pictures themselves stay as they are.
int DropPacs(TerminalOutput& out);
/// Has the pictures of a visit sent that haven't been yet, also of one from before there was a server: chart, date,
/// section.
int SendVisitToPacs(const QStringList& arguments, TerminalOutput& out);
/// Asks the server which pictures of a year it lacks, or has with another content; this year's without one.
int ComparePacs(const QString& year, TerminalOutput& out);

/// What waits on this machine: pictures whose rows aren't in, or that aren't in the capture root either. Both give an
/// `ExitCode`; `Found` as long as something waits.

/// Shows it, with whose it is.
int ListPending(Report& report);
/// Files and writes what dead stations of this user have left, as the station's next start would. What belongs to one
/// that lives stays its own.
int WritePending(TerminalOutput& out);

/// The capture root's identity: in its mark, and as the database remembers it. Both give an `ExitCode`; `Found` where
/// they differ or one is missing.

int ShowRoot(TerminalOutput& out);
/// The database remembers the present root, in a table that is made for it: every station refuses another from then on.
int StoreRoot(TerminalOutput& out);

/// Takes over what dead stations of other users have left on this machine, as far as this user may: their pictures,
/// movies and journals come into this user's folder, and go on from there as his own. Gives an `ExitCode` as
/// `WritePending` does.
int TakeOverPending(TerminalOutput& out);

/// `upgrade-tables`: makes the columns and keys of the station's own tables fit for what the station writes, without
/// a change to any text, and makes the table of identities where it is missing or closed to the station: tells first
/// what it is about to do and what it won't, asks, and compares all texts afterwards.
/// The options are `--yes`, which goes on without the question, `--utf8mb4`, `--bytes=SET`, `--user=NAME` and
/// `--password-file=FILE`. Gives an `ExitCode`; `Found` where something was refused or has been left as it is.
int UpgradeTables(const QStringList& options, TerminalOutput& out);

/// `verify [YEAR]`: the archive against the tables, of one year or of all. Tells of rows without a file, files without
/// a row, visits without theirs, pictures that can't be read, movies without an index, folders and names that can't be
/// looked into, and what processes have left; changes nothing. The options are `--this-year`; `--decode`, with which
/// each picture is decoded, where otherwise its content is read and looked at from both ends; and `--all`, which tells
/// each finding where otherwise many of a kind are counted. Gives an `ExitCode`.
int VerifyArchive(const QString& year, const QStringList& options, Report& report);

/// `history [CHART]`: the record of access, newest last, of one patient or of all. The options are `--day=`, `--from=`,
/// `--to=` (days of the acts, yyyymmdd), `--user=` (Linux user), `--kind=` (words of the table, joined with commas),
/// `--csv`, `--json` (a line each), and `--db-user=NAME` with `--password-file=FILE`. Tells of gaps, on standard error
/// beside CSV and JSON. Gives an `ExitCode`; `Found` where acts of a program's run are missing.
int ShowHistory(const QString& chart, const QStringList& options, TerminalOutput& out);
/// `notes CHART`: the earlier texts of the patient's notes and reports, with who changed them when. Options of the
/// account as above. Gives an `ExitCode`.
int ShowEarlierTexts(const QString& chart, const QStringList& options, TerminalOutput& out);

/// What was kept for long enough goes; each lists what would go, and removes it with `--yes` alone. Each gives an
/// `ExitCode`; `Found` where it refuses the year, or something couldn't be removed.

/// `retire-log YEAR`: entries of the record of access of a year that ended at least two full years ago. Options of the
/// account as above.
int RetireLog(const QString& year, const QStringList& options, TerminalOutput& out);
/// `retire-deleted YEAR`: pictures in the Log folders of a year that ended at least ten full years ago.
int RetireDeleted(const QString& year, const QStringList& options, TerminalOutput& out);

/// `patient CHART --list | --remove`: all that the station has of one patient: files, what waits on this machine, rows
/// of its own tables but the record of access. `--remove` asks for the chart twice, at a terminal, and refuses while a
/// visit is open. Options of the account as above. Gives an `ExitCode`; `Found` where something is left or was refused.
int HandlePatient(const QString& chart, const QStringList& options, TerminalOutput& out);

/// `first-setup`: groups of the station's users, capture root, tables, account and setup file of a machine that has
/// none of them yet. Asks before each, and tells what it has done; what is there stays as it is. Throws PlatformError
/// for anybody but root. Gives an `ExitCode`.
int SetUpFirst(TerminalOutput& out);
