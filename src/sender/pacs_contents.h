#pragma once

#include "visit/Visit.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

/// A picture's file as the sender finds it; to be asked on a thread that may block.
struct PacsContent
{
    enum Kind {
        Read,
        Gone,  ///< There is no such picture.
        Other, ///< Something else stands there.
        Away,  ///< The file, or the share that it lies in, can't be read for the time being.
    };

    Kind kind = Away;
    QByteArray bytes = {};
    QDateTime takenAt = {}; ///< Local time.
    QString reason = {};    ///< Why it can't be read.
};

/// Never throws.
PacsContent ReadPacsContent(const Visit& visit, int number);
