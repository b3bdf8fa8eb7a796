#include "capture/PendingRows.h"

#include "contracts/components.h"
#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/guard.h"
#include "contracts/PlatformError.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

QString ListPath()
{
    return UseService<Desktop>().ProgramFolder() + u"\\PendingRows.json"_s;
}

QJsonObject ToJson(const PendingRows::Entry& entry)
{
    const CaptureVisit& visit = entry.visit;
    return {{u"chart"_s, visit.chart},       {u"yuhyung"_s, visit.yuhyung}, {u"jinchal"_s, visit.jinchal},
            {u"ymd"_s, visit.ymd},           {u"etc"_s, visit.etc},         {u"captureDir"_s, visit.captureDir},
            {u"imageExt"_s, visit.imageExt}, {u"extra"_s, visit.extra},     {u"number"_s, entry.number},
            {u"note"_s, entry.note}};
}

PendingRows::Entry FromJson(const QJsonObject& json)
{
    const auto text = [&json](const QString& key) { return json.value(key).toString(); };
    return {{text(u"chart"_s), text(u"yuhyung"_s), text(u"jinchal"_s), text(u"ymd"_s), text(u"etc"_s),
             text(u"captureDir"_s), text(u"imageExt"_s), text(u"extra"_s)},
            json.value(u"number"_s).toInt(),
            text(u"note"_s)};
}

} // namespace

PendingRows::PendingRows()
{
    Load();
}

bool PendingRows::Holds(const CaptureVisit& visit, int number) const
{
    for (const Entry& entry : m_entries) {
        if (entry.number == number && entry.visit.chart == visit.chart && entry.visit.ymd == visit.ymd &&
            entry.visit.etc == visit.etc)
            return true;
    }
    return false;
}

void PendingRows::Add(const Entry& entry)
{
    m_entries.append(entry);
    Store();
}

void PendingRows::WriteAll(const std::function<void(const Entry&)>& write)
{
    bool changed = false;
    try {
        while (!m_entries.isEmpty()) {
            write(m_entries.first());
            m_entries.removeFirst();
            changed = true;
        }
    } catch (...) {
        if (changed)
            Store();
        throw;
    }
    if (changed)
        Store();
}

void PendingRows::Load()
{
    if (!FileExists(ListPath()))
        return;
    try {
        QJsonParseError error = {};
        const QJsonDocument document = QJsonDocument::fromJson(Files().ReadFile(ListPath()), &error);
        if (error.error != QJsonParseError::NoError)
            throw PlatformError(error.errorString());
        const QJsonArray entries = document.array();
        for (const QJsonValue& value : entries)
            m_entries.append(FromJson(value.toObject()));
    } catch (const PlatformError& error) {
        qWarning("%s: %s", qPrintable(ListPath()), error.what());
        Guarded([] { Files().RenameFile(ListPath(), ListPath() + u".broken"_s); });
    }
}

void PendingRows::Store() const
{
    try {
        if (m_entries.isEmpty()) {
            DeleteFile(ListPath());
            return;
        }
        QJsonArray entries;
        for (const Entry& entry : m_entries)
            entries.append(ToJson(entry));
        WriteWholeFile(ListPath(), QJsonDocument(entries).toJson());
    } catch (const PlatformError& error) {
        qWarning("%s", error.what());
    }
}
