#pragma once

#include "visit/Visit.h"

#include <QString>
#include <QStringList>

class fpSpread;
class ImagXpress;
class StatusPanels;

/// What a caller hands to the printed sheet; one for each print. All texts.
struct CaptureSheetRecord
{
    Visit Of;        ///< The visit whose pictures they are.
    QString Jinchal; ///< Code of the examining doctor; not printed.
    QString Suname;
    QString Jumin;
    QString Sex;
    QString Nai;
    QString Phone;
    QString Address;
    QString PrintYmd;     ///< `yyyymmdd`.
    QStringList Pictures; ///< Full paths, in the order of printing.
};

/// Chart "0", everything else empty.
void ClearCaptureSheetRecord(CaptureSheetRecord& sheet);

/// The visit, its patient as the panels show him, and today as the date of printing.
void FillCaptureSheetRecord(CaptureSheetRecord& sheet, const Visit& visit, const StatusPanels& patient);

/// Prints the record's pictures, six to a page, each page a job of its own; the carrier brings each picture to the
/// page. A picture that can't be read leaves a frame with its file's name. There is at least one picture. Throws
/// PlatformError when the printer refuses.
void PrintCaptureSheet(const CaptureSheetRecord& sheet, ImagXpress& carrier);

/// Paths of the pictures that a sheet takes from a grid, in the grid's order, as far as their files exist. Layout 1
/// gives the pictures of columns 1 to 3, whatever is ticked; any other layout the ticked ones.
QStringList SheetPictures(fpSpread& grid, int gridNumber, const Visit& visit);

/// Prints the sheet of the visit that a grid shows, with the pictures that `SheetPictures` takes; nothing without any.
/// Throws PlatformError when the printer refuses.
void PrintGridSheet(fpSpread& grid, int gridNumber, const Visit& visit, const StatusPanels& patient,
                    ImagXpress& carrier);
