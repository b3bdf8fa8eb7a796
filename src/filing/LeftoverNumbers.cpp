#include "filing/LeftoverNumbers.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/NumberClaim.h"
#include "filing/StationLease.h"
#include "frame/services.h"

#include <QPointer>

using namespace Qt::StringLiterals;

namespace {

constexpr int ChartSize = 8;
constexpr int DateSize = 8;

/// Chart, date and number in a claim's name; no number for any other name.
LeftoverNumber FromClaimName(const QString& name, const PictureJournal::Folder& folder)
{
    const QString digits = name.mid(ChartSize + DateSize);
    bool isNumber = false;
    const int number = digits.toInt(&isNumber);
    if (digits.size() < 3 || !isNumber || number <= 0)
        return {};
    LeftoverNumber leftover;
    leftover.visit.chart = name.left(ChartSize);
    leftover.visit.ymd = name.mid(ChartSize, DateSize);
    leftover.visit.etc = folder.etc;
    leftover.visit.captureDir = folder.captureDir;
    leftover.number = number;
    return leftover;
}

bool HasPicture(const Visit& visit, int number)
{
    return PictureExists(visit.PicturePath(number));
}

/// Another machine's claim, or one that doesn't say whose it is.
void ClearForeignClaim(const LeftoverNumber& leftover, const QString& path)
{
    if (!NumberClaim::IsPictureThere(leftover.visit, leftover.number) && Files().AgeMs(path) > AbandonedMs)
        DeleteFile(path);
}

void LookAtClaim(const QString& name, const PictureJournal::Folder& folder, QList<LeftoverNumber>& found)
{
    LeftoverNumber leftover = FromClaimName(name, folder);
    if (leftover.number == 0)
        return;
    const QString path = SectionFolder(folder.captureDir, folder.etc) + name;
    const std::optional<NumberClaim::Facts> facts = NumberClaim::Read(path);
    if (!facts)
        return;
    const Holder holder = StationLease::HolderOf(RootOfYear(folder.captureDir), facts->holder);
    if (holder == Holder::Elsewhere)
        ClearForeignClaim(leftover, path);
    if (holder != Holder::Dead)
        return;
    leftover.visit.yuhyung = facts->yuhyung;
    leftover.visit.imageExt = facts->imageExt;
    leftover.picture = facts->picture;
    if (HasPicture(leftover.visit, leftover.number))
        found.append(leftover);
    else
        DeleteFile(path);
}

void LookInFolder(const PictureJournal::Folder& folder, QList<LeftoverNumber>& found)
{
    const QString section = SectionFolder(folder.captureDir, folder.etc);
    for (const QString& name : Files().FilesStartingWith(section, QString())) {
        try {
            LookAtClaim(name, folder, found);
        } catch (const PlatformError&) {
            // A later start looks at it again.
        }
    }
    Files().RemoveLeftovers(section);
    Files().RemoveLeftovers(LogFolder(folder.captureDir, folder.etc));
}

} // namespace

QList<LeftoverNumber> LeftoverNumbers::FindIn(const QList<PictureJournal::Folder>& folders)
{
    QList<LeftoverNumber> found;
    for (const PictureJournal::Folder& folder : folders) {
        try {
            LookInFolder(folder, found);
        } catch (const PlatformError&) {
            // A list of an earlier run may name a folder that can be none.
        }
    }
    return found;
}

void LeftoverNumbers::LookIn(const QList<PictureJournal::Folder>& folders)
{
    m_thread.Post([folders, self = QPointer(this)] {
        const QList<LeftoverNumber> numbers = FindIn(folders);
        PostToScreen([self, numbers] {
            if (self)
                Q_EMIT self->Found(numbers);
        });
    });
}
