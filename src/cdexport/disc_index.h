#pragma once

#include "contracts/cd.h"

/// Pages that show a disc's pictures in any browser: INDEX.HTM, README.TXT, and a folder with a page and small pictures
/// for each visit. They are made for one disc, beside the staging folder and never in it.
namespace disc_index {

struct Patient
{
    QString chart; ///< The only one whose name may stand on the disc.
    QString name;
};

struct Kind
{
    bool hasNotes = false;
    bool isInterchange = false; ///< Names and texts as other clinics' programs look for them (IHE PDI).
    QString clinic;             ///< Its name.
};

/// Makes them for what is staged, and gives their folder, with a separator at its end; empty when the operator gives it
/// up. Throws PlatformError.
QString Make(const QString& area, const DiscContent& content, const Patient& patient, const Kind& kind);

} // namespace disc_index
