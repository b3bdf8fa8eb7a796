#include "frame/services.h"

#include "contracts/files.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "contracts/printing.h"
#include "frame/components.h"
#include "frame/journal.h"

namespace {
MousePointer pointerNow = PointerNormal;
} // namespace

void ShowInformation(const QString& text, int patienceMs)
{
    journal::NoteShown(text);
    UseService<Desktop>().ShowInformation(text, patienceMs);
}

bool AskYesNo(const QString& question)
{
    return UseService<Desktop>().AskYesNo(question);
}

Answer AskYesNoCancel(const QString& question)
{
    return UseService<Desktop>().AskYesNoCancel(question);
}

void SetMousePointer(MousePointer pointer)
{
    pointerNow = pointer;
    UseService<Desktop>().SetMousePointer(pointer);
}

MousePointer MousePointerNow()
{
    return pointerNow;
}

void PumpEvents()
{
    UseService<Desktop>().PumpEvents();
}

void EndProgram()
{
    UseService<Desktop>().EndProgram();
}

FileStore& Files()
{
    return UseService<FileStore>();
}

bool FolderExists(const QString& path)
{
    return Files().FolderExists(path);
}

void MakeFolder(const QString& path)
{
    Files().MakeFolder(path);
}

bool FileExists(const QString& path)
{
    return Files().FileExists(path);
}

bool PictureExists(const QString& path)
{
    return Files().KindOf(path) == FileKind::File;
}

void WriteWholeFile(const QString& path, const QByteArray& content)
{
    Files().WriteWholeFile(path, content);
}

void DeleteFile(const QString& path)
{
    Files().DeleteFile(path);
}

QByteArray ReadListFile(const QString& path)
{
    QByteArray content = Files().ReadArchivedPiece(path, 0, LargestListBytes + 1);
    if (content.size() > LargestListBytes)
        throw PlatformError(QStringLiteral("목록이라기에는 너무 큰 파일입니다.!! (%1)").arg(NativePath(path)));
    return content;
}

PictureReader& Pictures()
{
    return UseService<PictureReader>();
}

QImage LoadPicture(const QString& path)
{
    return path.isEmpty() ? QImage() : Pictures().Load(path);
}

PrinterObject& Printer()
{
    return UseService<PrinterObject>();
}
