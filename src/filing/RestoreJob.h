#pragma once

#include "visit/Visit.h"

#include <QString>

/// A deleted picture on its way back from the Log folder. It stands in the journal from before its file is touched
/// until nothing of it is left to do.
struct RestoreJob
{
    QString id;     ///< Names the claim of its number and its file in the Log folder; unlike that of any other picture.
    Visit visit;    ///< With the extension of the file.
    int wanted = 0; ///< Number that it had.
    QString source; ///< Name that its file had in the Log folder.
};

/// In the record of access, once for the job: the picture stands under that number.
void RecordRestored(const RestoreJob& job, int number);
