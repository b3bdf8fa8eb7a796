#pragma once

#include "visit/Visit.h"

#include <QByteArray>
#include <QList>
#include <QString>

/// Pictures of a visit that the operator wants deleted, fixed when he said so: what comes into the visit later isn't
/// among them. It stands in the journal until its end.
struct DeletionJob
{
    struct Item
    {
        int number = 0;
        QByteArray version = {}; ///< Of its file when the job was begun; empty without one.
        QString picture = {};    ///< Identity, as far as it is known.
        bool isMoved = false;    ///< It is no live picture any more.
        bool wasMoved = false;   ///< This job has moved it, in this run.
    };

    QString id;
    Visit visit;
    bool isWhole = false; ///< All that the visit had: its row goes too, also without a picture.
    /// Examining doctor's code of the visit whose capture mark is taken back; empty when none is.
    QString markedDoctor;
    /// The rows couldn't be asked: those up to this number are meant too. 0 when they were.
    int rowsUpTo = 0;
    bool isPlanned = false; ///< The items have their versions; nothing is moved before that.
    QList<Item> items;
};
