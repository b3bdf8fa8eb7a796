#pragma once

#include "contracts/ado.h"
#include "contracts/ClientSetup.h"

#include <QList>
#include <QString>

/// One thing that the station needs, as it was found.
struct CheckLine
{
    enum Verdict {
        Right,
        Remark, ///< It works, but an administrator should know.
        Wrong,
    };

    Verdict verdict = Right;
    QString what;   ///< The thing.
    QString found;  ///< How it is.
    QString toDo{}; ///< What puts it right; empty where nothing has to be done.
};
using CheckLines = QList<CheckLine>;

/// Looks at what lies outside, and changes nothing that stays. What doesn't answer is one of its lines.
class OutsideChecks
{
public:
    struct Setup
    {
        CheckLines lines;
        bool isGood = false; ///< The record below can be used.
        ClientSetupRecord client;
        SaupRecords places;
        bool isServer = false;        ///< The database is a server's, not a file.
        ConnectionPointer connection; ///< Null when it can't be opened.
    };

    virtual ~OutsideChecks() = default;

    /// The setup file, its secrets, and the way to the database.
    virtual Setup LookAtSetup() = 0;
    /// A connection of its own to the setup's database, whose statements may take as long as they need. With the
    /// setup's account when `user` is empty; the password is the first line of `passwordFile` where one is named.
    /// Throws PlatformError.
    virtual ConnectionPointer OpenForUpkeep(const QString& user, const QString& password,
                                            const QString& passwordFile) = 0;
    /// The capture root, with the folders of this year's sections.
    virtual CheckLines LookAtCaptureRoot(const ClientSetupRecord& client) = 0;
    /// The devices, programs, fonts and plugins of this machine, for the user who runs this.
    virtual CheckLines LookAtMachine(const ClientSetupRecord& client) = 0;
};
