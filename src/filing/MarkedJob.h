#pragma once

#include "records/picture_sums.h"
#include "visit/Visit.h"

#include <QByteArray>
#include <QString>

/// A stored picture whose file the editor has replaced. It stands in the journal until the table has its new sum.
struct MarkedJob
{
    QString id;
    Visit visit;
    int number = 0;
    PictureSum sum;
    QByteArray version; ///< Of the file that was written.
};
