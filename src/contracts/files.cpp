#include "contracts/files.h"

#include "contracts/components.h"

#include <QDir>

QString NativePath(const QString& stationPath)
{
    QString path = stationPath;
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    // The doubled separator of two joined parts; a leading double slash names a network share and stays.
    for (qsizetype at = path.indexOf(QLatin1String("//"), 1); at >= 0; at = path.indexOf(QLatin1String("//"), at))
        path.remove(at, 1);
    return QDir::toNativeSeparators(path);
}

bool IsPathPart(const QString& part)
{
    if (part.trimmed().isEmpty() || part == QLatin1String(".") || part == QLatin1String(".."))
        return false;
    if (part.toUtf8().size() > LongestPathPartBytes)
        return false;
    return !part.contains(QLatin1Char('/')) && !part.contains(QLatin1Char('\\')) && !part.contains(QChar(u'\0'));
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
