#include "capture/NumberClaim.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"

#include <QCoreApplication>
#include <QSysInfo>

using namespace Qt::StringLiterals;

namespace {

QString Holder()
{
    return u"%1-%2"_s.arg(QSysInfo::machineHostName()).arg(QCoreApplication::applicationPid());
}

/// Takes a dead claim out of the way. It is renamed first: of two stations that find it dead only one gets it, and the
/// other doesn't delete the claim that the first makes in its place.
void RemoveDeadClaim(const QString& path)
{
    const QString aside = path + u".dead-"_s + Holder();
    try {
        Files().RenameFile(path, aside);
        if (Files().AgeMs(aside) < NumberClaim::LifeMs)
            Files().CreateExclusively(path, Files().ReadFile(aside));
        Files().DeleteFile(aside);
    } catch (const PlatformError&) {
        // Gone already: the other station was quicker.
    }
}

} // namespace

std::unique_ptr<NumberClaim> NumberClaim::Take(const QString& path)
{
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (Files().CreateExclusively(path, Holder().toUtf8()))
            return std::unique_ptr<NumberClaim>(new NumberClaim(path));
        if (Files().AgeMs(path) <= NumberClaim::LifeMs)
            return nullptr;
        RemoveDeadClaim(path);
    }
    return nullptr;
}

NumberClaim::~NumberClaim()
{
    try {
        Files().DeleteFile(m_path);
    } catch (const PlatformError&) {
        // A share that went away: the claim dies of age.
    }
}
