#include "platform/disc/disc_drives.h"

#include "contracts/files.h"

#include <QDir>

#include <algorithm>

using namespace Qt::StringLiterals;

QList<DriveEntry> ListDiscDrives(const QString& image, const QString& devices)
{
    if (!image.isEmpty())
        return {{DriveTypeCd, NativePath(image)}};
    QStringList names = QDir(devices).entryList({u"sr[0-9]*"_s}, QDir::Files | QDir::System);
    const auto number = [](const QString& name) { return name.mid(2).toInt(); };
    std::sort(names.begin(), names.end(),
              [&](const QString& one, const QString& other) { return number(one) < number(other); });
    QList<DriveEntry> drives;
    for (const QString& name : names)
        drives.append({DriveTypeCd, devices + name});
    return drives;
}
