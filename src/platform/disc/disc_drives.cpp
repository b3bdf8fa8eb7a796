#include "platform/disc/disc_drives.h"

#include "contracts/files.h"

#include <QCollator>
#include <QDir>

using namespace Qt::StringLiterals;

QList<DriveEntry> ListDiscDrives(const QString& image)
{
    if (!image.isEmpty())
        return {{DriveTypeCd, NativePath(image)}};
    QStringList names = QDir(u"/dev"_s).entryList({u"sr[0-9]*"_s}, QDir::System);
    QCollator byNumber(QLocale::c());
    byNumber.setNumericMode(true);
    std::sort(names.begin(), names.end(), byNumber);
    QList<DriveEntry> drives;
    for (const QString& name : names)
        drives.append({DriveTypeCd, u"/dev/"_s + name});
    return drives;
}
