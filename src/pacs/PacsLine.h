#pragma once

#include "visit/Visit.h"

#include <QDateTime>
#include <QString>

/// What a process tells the sender, in a line of the queue. No process but the sender changes what becomes of a
/// picture.
struct PacsLine
{
    enum Kind {
        Send,      ///< A picture that is safe.
        Changed,   ///< Its file is another one now: it goes as it is.
        Withdrawn, ///< It is to be deleted: it doesn't go any more.
        Kept,      ///< It wasn't deleted after all.
        Stored,    ///< The operator has stored the visit: all that belongs to it goes.
        Retry,     ///< What was set aside goes again, and nothing pauses.
        Drop,      ///< What was set aside doesn't go any more.
        Setup,     ///< The setup is now the one that `id` tells of.
        Opened,    ///< A screen shows the visit.
        Begun,     ///< The first still or import of the visit in this run is safe.
        Closed,    ///< The screen that showed the visit has been closed.
        Chosen,    ///< The operator has chosen the entry of the worklist that `text` names.
    };

    Kind kind = Send;
    QString id = {}; ///< Of the picture: the same picture again is told apart from another one under its number.
    QString chart = {};
    QString ymd = {};
    QString etc = {};
    QString imageExt = {};
    int number = 0;         ///< 0: all of the visit.
    QString doctor = {};    ///< Code of the visit's examining doctor; empty when it isn't known.
    bool goes = false;      ///< Whether its visit has been stored or not.
    QDateTime takenAt = {}; ///< Local time of the press; invalid when it isn't known.
    QString part = {};      ///< As `PacsEntry::part`.
    QString text = {};      ///< What the kind says.

    /// Of a picture, or, without a number, of the visit; `id` for `Send` is to follow.
    static PacsLine Of(Kind kind, const Visit& visit, int number = 0)
    {
        return {kind, {}, visit.chart, visit.ymd.trimmed(), visit.etc, visit.imageExt, number};
    }
};

/// How far a picture of the queue has come.
enum class PacsState {
    Held,      ///< Its visit hasn't been stored.
    Waiting,   ///< It goes when its turn comes.
    UnderWay,  ///< It may be at the server, and may not.
    Sent,      ///< The server has it.
    SetAside,  ///< The server has refused this one.
    Withdrawn, ///< It is deleted, or is to be.
    Committed, ///< The server has it, and answers for it.
};

/// A picture as the queue has it. It tells no folder: where captures lie is the setup's.
struct PacsEntry
{
    qint64 place = 0; ///< Of its turn.
    QString id;
    QString chart;
    QString ymd;
    QString etc;
    QString imageExt;
    int number = 0;
    QString doctor;
    PacsState state = PacsState::Held;
    QString reason;          ///< Why it is set aside, or had to wait.
    int tries = 0;           ///< How often it had to wait for something of its own.
    qint64 notBefore = 0;    ///< Milliseconds since 1970; it waits for itself until then.
    QString uid;             ///< Of what the server has of it; empty without that.
    bool isDoubtful = false; ///< The server may have it already.
    int revision = 0;        ///< Another one once a line has said something of it.
    /// Which object of that number it is: empty for the picture itself, else a word with what tells it from others of
    /// its kind behind a colon.
    QString part;
    QDateTime takenAt; ///< Local time of the press; invalid when it isn't known.
    QString text;      ///< What the part needs beside it.
    QString classUid;  ///< Of what the server has of it.
    int instance = 0;  ///< Its instance number; 0 until it has one.
    int restorings = 0;

    Visit VisitBelow(const QString& captureRoot) const
    {
        return {chart, {}, ymd, etc, YearFolder(captureRoot, ymd), imageExt};
    }
};
