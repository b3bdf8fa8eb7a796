#pragma once

#include "visit/Visit.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

/// A movie of a visit on its way from this machine's disk, where it is recorded, to the share. It stands in the journal
/// from its beginning until its last file has come there, or a later movie of the visit has taken its place.
struct MovieJob
{
    /// A file on the share.
    struct File
    {
        QString path;
        QByteArray version; ///< When it was listed, or brought: another one that has come under the name since stays.
        QString local = {}; ///< Name on this machine of one that was brought.
    };

    QString id;
    Visit visit;
    QDateTime startedAt = {}; ///< Local time; invalid in a job of an earlier release.
    bool isListed = false;    ///< The earlier movies are fixed.
    QList<File> earlier = {}; ///< Of earlier movies, which this one takes the place of.
    QList<File> brought = {}; ///< Its own that stand there.
};
