#pragma once

#include <QString>
#include <QStringList>

class ImagXpress;
class StatusPanels;

/// What a caller hands to the printed sheet; one for each print. All texts.
struct CaptureSheetRecord
{
    QString Chart;
    QString Yuhyung;
    QString Jinchal;
    QString Etc;
    QString Suname;
    QString Jumin;
    QString Sex;
    QString Nai;
    QString Phone;
    QString Address;
    QString Ymd;          ///< Date of the examination, `yyyymmdd`.
    QString PrintYmd;     ///< `yyyymmdd`.
    QStringList Pictures; ///< Full paths, in the order of printing.
};

/// Chart "0", everything else empty.
void ClearCaptureSheetRecord(CaptureSheetRecord& sheet);

/// The current visit, its patient as the panels show him, and today as the date of printing.
void FillCaptureSheetRecord(CaptureSheetRecord& sheet, const StatusPanels& patient);

/// Prints the record's pictures, six to a page, each page a job of its own; the carrier brings each picture to the
/// page. A picture that can't be read leaves a frame with its file's name. There is at least one picture. Throws
/// PlatformError when the printer refuses.
void PrintCaptureSheet(const CaptureSheetRecord& sheet, ImagXpress& carrier);
