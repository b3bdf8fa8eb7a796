#pragma once

#include "records/picture_sums.h"
#include "visit/Visit.h"

#include <QByteArray>
#include <QString>

/// A stored picture whose file the editor has replaced, or a movie's file that has come to the share or gone from it.
/// It stands in the journal until the table has its new sum.
struct MarkedJob
{
    QString id;
    Visit visit;
    int number = 0;
    PictureSum sum;
    QByteArray version; ///< Of the file that was written; empty for one that has gone.
    bool isMovie = false;

    QString Path() const { return isMovie ? MoviePath(visit.MovieStem(), number) : visit.PicturePath(number); }
};
