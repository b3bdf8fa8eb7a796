#include "cdexport/file_origins.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/file_calls.h"
#include "frame/journal.h"
#include "frame/services.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {
using file_origins::Origin;

struct Kept
{
    Origin origin;
    QString version; ///< Of the file.
};

QString PathOf(const QString& area)
{
    return area.chopped(1) + u"-origins.json"_s;
}

QString VersionOf(const QString& path)
{
    return QString::fromLatin1(Files().VersionOf(path).toHex());
}

/// Those whose file is still the same.
QHash<QString, Kept> Read(const QString& area)
{
    QHash<QString, Kept> kept;
    if (Files().KindOf(PathOf(area)) != FileKind::File)
        return kept;
    // What somebody else has written there is no list, and then an empty one.
    const QJsonArray list = QJsonDocument::fromJson(ReadListFile(PathOf(area))).array();
    for (const QJsonValue& each : list) {
        const QJsonObject file = each.toObject();
        const QString name = file.value(u"name").toString();
        Kept one{{file.value(u"chart").toString(), file.value(u"ymd").toString(), file.value(u"etc").toString(),
                  file.value(u"number").toInt()},
                 file.value(u"version").toString()};
        if (IsPathPart(name) && !one.version.isEmpty() && VersionOf(area + name) == one.version)
            kept.insert(name, one);
    }
    return kept;
}

void Write(const QString& area, const QHash<QString, Kept>& kept)
{
    QJsonArray list;
    for (auto file = kept.cbegin(); file != kept.cend(); ++file) {
        const Origin& origin = file->origin;
        list.append(QJsonObject{{u"name"_s, file.key()},
                                {u"version"_s, file->version},
                                {u"chart"_s, origin.chart},
                                {u"ymd"_s, origin.ymd},
                                {u"etc"_s, origin.etc},
                                {u"number"_s, origin.number}});
    }
    Files().WritePrivateFile(PathOf(area), QJsonDocument(list).toJson(QJsonDocument::Compact));
}

/// Name under which the file lies in the folder: it gets a number beside another of its name.
QString StagedName(const QString& area, const QStringList& before, const QString& source)
{
    const QString stem = QFileInfo(NativePath(source)).completeBaseName();
    const QStringList candidates = Files().FilesStartingWith(area, stem);
    for (const QString& name : candidates) {
        if (!before.contains(name))
            return name;
    }
    // It was there already.
    for (const QString& name : candidates) {
        if (Files().SameContent(source, area + name))
            return name;
    }
    return {};
}
} // namespace

QStringList file_origins::NamesIn(const QString& area)
{
    return filecalls::Ask([area] { return Files().Names(area).files; });
}

void file_origins::Record(const QString& area, const QStringList& before, const QString& source, const Origin& origin)
{
    journal::NotingFaults([&] {
        filecalls::Ask([=] {
            const QString name = StagedName(area, before, source);
            if (name.isEmpty())
                return;
            QHash<QString, Kept> kept = Read(area);
            kept.insert(name, {origin, VersionOf(area + name)});
            Write(area, kept);
        });
    });
}

QHash<QString, Origin> file_origins::Of(const QString& area)
{
    return filecalls::Ask([area] {
        QHash<QString, Origin> origins;
        const QHash<QString, Kept> kept = Read(area);
        for (auto file = kept.cbegin(); file != kept.cend(); ++file)
            origins.insert(file.key(), file->origin);
        return origins;
    });
}
