#pragma once

#include "contracts/files.h"

#include <QList>
#include <QString>
#include <QStringList>

/// What the station has of one patient, wherever it lies. The clinic's own tables and the record of access aren't
/// asked.
struct PatientTraces
{
    /// Files below the capture root, of one kind, by their paths.
    struct Files
    {
        QString what;
        QStringList paths;
    };

    /// What waits in one file of this machine: a journal of pictures or a sender's queue.
    struct Waiting
    {
        enum Kind { Journal, Queue, OldList };

        Kind kind = Journal;
        QString path;
        Holder holder = Holder::Dead; ///< Of a journal.
        QString foreignOwner;         ///< User's name, unless it is this process's user.
        QString lock;                 ///< Held by whoever works on it.
        int lines = 0;
        QStringList pictures; ///< Identities of what a journal holds,
        QStringList movies;
        QStringList deletions;
        QStringList files; ///< and their files on this machine.
    };

    struct Rows
    {
        QString table;
        QString column; ///< That holds the chart.
        qint64 count = 0;
    };

    QString chart;
    QList<Files> archive;
    QList<Waiting> waiting;
    QStringList unreadable; ///< Lists that may hold something of anybody.
    QList<Rows> rows;
    QStringList closedTables; ///< That aren't there, or can't be read.
    QStringList openVisits;   ///< Why a visit of the patient counts as open.

    int livingStations = 0; ///< On this capture root, on whatever visit.

    bool IsAny() const;
};

/// Looks for all of it, on the database that `Connection` reaches too. Throws PlatformError for a folder or table that
/// gives out.
PatientTraces TracesOf(const QString& chart, bool isServer);
