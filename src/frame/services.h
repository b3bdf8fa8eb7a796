#pragma once

#include "contracts/desktop.h"

#include <QString>

class FileStore;
class PictureReader;
class PrinterObject;
class QByteArray;
class QImage;

/// Short ways to the services that stand ready from the first line of the program on. What each does, and which faults
/// it throws, is told by its contract.

void ShowInformation(const QString& text, int patienceMs = 0);
bool AskYesNo(const QString& question);
Answer AskYesNoCancel(const QString& question);
void SetMousePointer(MousePointer pointer);
/// As it was set last.
MousePointer MousePointerNow();
void PumpEvents();
void EndProgram();

/// Busy pointer for the length of a routine.
class BusyPointer
{
public:
    BusyPointer() { SetMousePointer(PointerBusy); }
    ~BusyPointer() { SetMousePointer(PointerNormal); }
    BusyPointer(const BusyPointer&) = delete;
    BusyPointer& operator=(const BusyPointer&) = delete;
};

FileStore& Files();
bool FolderExists(const QString& path);
void MakeFolder(const QString& path);
bool FileExists(const QString& path);
/// True when the archive holds a picture of that name: a regular file.
bool PictureExists(const QString& path);
void WriteWholeFile(const QString& path, const QByteArray& content);
void DeleteFile(const QString& path);
/// A list that waits is never longer than this many bytes: what is, was put there by somebody.
inline constexpr qint64 LargestListBytes = 64LL * 1024 * 1024;
/// The content of a list, or of a file beside it, whoever's it is: a link isn't followed, a pipe not waited for. Throws
/// PlatformError, also for anything but a regular file, and for one that is longer than a list can be.
QByteArray ReadListFile(const QString& path);

PictureReader& Pictures();
/// The picture of a file as `PictureReader::Load` gives it; null for an empty path and for a file that can't be read.
QImage LoadPicture(const QString& path);

/// The one printer of the process: the file or printer chosen in the printer dialog, else the system's, or PDF files in
/// a folder.
PrinterObject& Printer();
