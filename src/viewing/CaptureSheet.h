#pragma once

#include "visit/Visit.h"

#include <QString>
#include <QStringList>

class ImagXpress;
class StatusPanels;
class VisitPictures;
struct PrintedPages;

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

/// The record's pictures, six to a page; the carrier brings each to the page. A picture that can't be read leaves a
/// frame with its file's name. There is at least one picture. Record and carrier have to outlive the pages.
PrintedPages PagesOf(const CaptureSheetRecord& sheet, ImagXpress& carrier);

/// Prints them, each a job of its own. Throws PlatformError when they can't become files.
void PrintCaptureSheet(const PrintedPages& pages);

/// Prints the sheet of the visit that is shown, with the pictures that are chosen; nothing without any. Where the setup
/// wants that, shows it before. Throws PlatformError when it can't become files.
void PrintGridSheet(const VisitPictures& pictures, const StatusPanels& patient, ImagXpress& carrier);
