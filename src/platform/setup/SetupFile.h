#pragma once

#include "contracts/ClientSetup.h"
#include "platform/sql/database.h"

#include <QStringList>

/// What a setup file says, before anything of it is tried.
struct SetupFile
{
    /// Something that the station passes over, and that is hardly meant so.
    struct Oddity
    {
        QString found;
        QString toDo;
    };

    ClientSetupRecord client;
    SaupRecords places;
    DatabaseSettings database;
    QString screenScale;            ///< A factor or `fit`; empty when nothing is said.
    QString passwordFile;           ///< Absolute; empty when the password stands in the setup file.
    bool needsCaptureMount = false; ///< The capture root has to be a mount point.
    QStringList problems;           ///< What keeps the station from starting, in Korean, one sentence each.
    QStringList notes;              ///< What an administrator should know.
    QList<Oddity> oddities;         ///< No hindrance for the start.
};

/// Reads the text of a setup file: UTF-8, or windows-949 when it isn't valid UTF-8. Paths that are not absolute are
/// taken from `folder`, the one that holds the file.
SetupFile ReadSetupFile(const QByteArray& content, const QString& folder);
