#pragma once

#include <QString>

struct Visit;

/// The record of access and change: who did what with which patient's pictures, notes and reports, in the station's
/// table `ca_log`. An act is on this machine's disk before the call's step ends, and goes to the table behind what is
/// under way; over an outage and a death of the program it is kept here, in order, and goes once. A clinic without the
/// table has none of it.
namespace acts {

enum class Kind {
    VisitOpened,   ///< On the capture screen or in the viewer.
    HistoryOpened, ///< A line of earlier visits.
    Filed,
    Imported,
    MarkedUp,
    LookedAt, ///< In the editor.
    Deleted,
    Restored,
    Swept, ///< A file without rows.
    Printed,
    DraggedOut,
    WrittenToDisc,
    Sent, ///< To the clinic's server.
    NoteStored,
    ReportStored,
    ReportDeleted,
    ReportPrinted,
    Searched,   ///< In reports; the detail is the key.
    ReportSent, ///< To the clinic's server.
    MovieSent,
    Rejected,     ///< There, after it was deleted here; the detail is its identifier.
    Administered, ///< A command of the administrator's program; the detail is its words.
    OrderTaken,   ///< Of the hospital's worklist; the detail is its number.
    StepSent,     ///< What was begun or done, to the hospital's server; the detail is its word and identifier.
    Committed,    ///< The clinic's server answers for a picture.
};
/// The word in the table: "visit-opened".
QString WordOf(Kind kind);

struct Act
{
    Kind kind;
    QString chart = {};
    QString ymd = {};
    QString etc = {};
    int number = 0;       ///< Of the picture; 0 without one.
    QString picture = {}; ///< Its identity, where it is known.
    QString detail = {};
    QString before = {}; ///< Text that stood there before; null without one.
    bool isRefused = false;
    QString key = {}; ///< What is done only once, such as a picture's filing: a repeat is the same act. Empty: none is.
};

/// An act on a picture of the visit, or, without a number, on the visit.
Act Of(Kind kind, const Visit& visit, int number = 0);

/// Any thread. Never waits for the database, never throws.
void Record(const Act& act);
void Record(Kind kind, const Visit& visit, int number = 0, const QString& detail = {});

} // namespace acts
