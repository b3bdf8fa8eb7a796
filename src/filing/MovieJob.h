#pragma once

#include "visit/Visit.h"

#include <QByteArray>
#include <QList>
#include <QString>

/// A movie of a visit on its way from this machine's disk, where it is recorded, to the share. It stands in the journal
/// from its beginning until its last file has come there.
struct MovieJob
{
    /// A file of an earlier movie, which the new one takes the place of.
    struct Earlier
    {
        QString path;
        QByteArray version; ///< When it was listed: another one that has come under the name since stays.
    };

    QString id;
    Visit visit;
    bool isListed = false; ///< The earlier movies are fixed.
    QList<Earlier> earlier;
};
