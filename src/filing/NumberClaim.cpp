#include "filing/NumberClaim.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"
#include "visit/Visit.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

void Delete(const QString& path)
{
    try {
        Files().DeleteFile(path);
    } catch (const PlatformError&) {
        // A share that went away: a later start of this machine clears it up.
    }
}

} // namespace

std::unique_ptr<NumberClaim> NumberClaim::Take(const Visit& visit, int number, const QString& picture)
{
    const QString path = visit.ClaimPath(number);
    const QJsonObject facts{{u"holder"_s, Files().ProcessMark()},
                            {u"yuhyung"_s, visit.yuhyung},
                            {u"imageExt"_s, visit.imageExt},
                            {u"picture"_s, picture}};
    if (!Files().CreateExclusively(path, QJsonDocument(facts).toJson(QJsonDocument::Compact)))
        return nullptr;
    return std::unique_ptr<NumberClaim>(new NumberClaim(path));
}

std::optional<int> NumberClaim::NumberOf(const Visit& visit, const QString& picture)
{
    for (const QString& name : Files().FilesStartingWith(visit.SectionFolder(), visit.PicturePrefix())) {
        bool isNumber = false;
        const int number = name.mid(visit.PicturePrefix().size()).toInt(&isNumber);
        if (!isNumber)
            continue; // A picture, not a claim.
        const std::optional<Facts> facts = Read(visit.ClaimPath(number));
        if (!facts || facts->picture != picture)
            continue;
        if (PictureExists(visit.PicturePath(number)))
            return number;
        Delete(visit.ClaimPath(number));
    }
    return std::nullopt;
}

void NumberClaim::Release(const Visit& visit, int number)
{
    Delete(visit.ClaimPath(number));
}

int NumberClaim::PicturesThere(Visit visit, int number)
{
    int count = 0;
    for (const QString& extension : {u"jpg"_s, u"bmp"_s}) {
        visit.imageExt = extension;
        count += FileExists(visit.PicturePath(number)) ? 1 : 0;
    }
    return count;
}

bool NumberClaim::Stands(const Visit& visit, int number)
{
    return FileExists(visit.ClaimPath(number));
}

std::optional<NumberClaim::Facts> NumberClaim::Read(const QString& path)
{
    try {
        const QJsonObject facts = QJsonDocument::fromJson(Files().ReadArchivedFile(path)).object();
        const auto text = [&facts](const QString& key) { return facts.value(key).toString(); };
        return Facts{text(u"holder"_s), text(u"yuhyung"_s), text(u"imageExt"_s), text(u"picture"_s)};
    } catch (const PlatformError&) {
        return std::nullopt;
    }
}

NumberClaim::~NumberClaim()
{
    if (!m_path.isEmpty())
        Delete(m_path);
}
