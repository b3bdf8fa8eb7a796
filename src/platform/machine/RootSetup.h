#pragma once

#include "contracts/MachineSetup.h"

/// By the machine's own usermod and loginctl, and on its server through the socket.
class RootSetup final : public MachineSetup
{
public:
    bool MayChange() const override;
    QStringList People() const override;
    QString AddToGroups(const QString& user, const QStringList& groups) override;
    QString LetLinger(const QString& user) override;
    QString MakeSharedFolder(const QString& path, const QString& group) override;
    bool HasServer() const override;
    bool HasDatabase(const QString& name) const override;
    QStringList MakeTables(const QString& database) override;
    QStringList MakeAccount(const QString& database, const QString& user, const QString& password) override;
    bool Exists(const QString& path) const override;
    QString WriteSecret(const QString& path, const QByteArray& content, const QString& group) override;
};
