#include "contracts/files.h"

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
