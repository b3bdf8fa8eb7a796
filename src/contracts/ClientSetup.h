#pragma once

#include "contracts/PacsSetup.h"

#include <QHash>
#include <QString>

#include <map>

/// True for a section whose name every column of the station's tables holds, whatever the server counts: 100 bytes of
/// UTF-8. The server would cut a longer one in silence.
inline bool FitsSectionColumn(const QString& section)
{
    return section.toUtf8().size() <= 100;
}

/// The clinic's setup as the setup component delivers it. All fields are text.
struct ClientSetupRecord
{
    QString CommPort;    ///< Number of the foot switch's serial port; empty means port 1.
    QString CaptureRoot; ///< Root folder of all captures, with a separator at its end.
    QString EtcList;     ///< Examination sections, separated by commas, each trimmed.
    QString ImageFormat; ///< "2" is bmp, every other value jpg.
    /// Of launch strings that could be text in either: "windows-949" or "utf-8"; empty for that of the environment.
    QString LaunchEncoding;
    QString CheckTable; ///< First character "1": the capture mark goes to `yk`, otherwise to `endo`.

    bool ShutterSound = true;            ///< Stills are heard.
    int MomentsBefore = 3;               ///< Seconds of the live picture that are kept in memory, 0 to 10.
    bool TestPicture = false;            ///< The video control offers a moving test picture beside the devices.
    QHash<QString, QString> SerialPorts; ///< Device file of a port number; a number without an entry is /dev/ttyS(n-1).
    bool PrintPreview = false;           ///< Pages are shown before they are printed.
    QString PrinterFolder;               ///< Printed pages become PDF files there; empty: the printer.
    QString BurnerImage;                 ///< Image file that stands in for a CD drive; empty: real drives.
    bool BurnerDicom = false;            ///< A CD also holds its pictures as DICOM.
    bool BurnerDicomPlain = false;       ///< Uncompressed, with pages: as any viewer of other clinics reads it.
    bool BurnerIndex = false;            ///< It also holds pages that show them in a browser.
    bool BurnerIndexNotes = false;       ///< The visits' notes stand on those pages.
    bool BurnerUsb = false;              ///< USB sticks can be written to.
    PacsSetupRecord Pacs;
};

/// One place of business of the clinic.
struct SaupRecord
{
    QString Yoyangno; ///< Care institution number.
    QString Hospital; ///< Name of the hospital.
};

/// The places of business by their number in the setup, which is the number in `doctor_saup`.
using SaupRecords = std::map<int, SaupRecord>;
