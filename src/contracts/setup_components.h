#pragma once

#include "contracts/ado.h"
#include "contracts/ClientSetup.h"

class QWidget;

/// `prjStartProfile.clsStartProfile`: where the clinic's setup and the database connection come from.
class clsStartProfile
{
public:
    virtual ~clsStartProfile() = default;

    /// Reads the setup and opens the connection. False when the station can't go on; the component has then told the
    /// operator why.
    virtual bool SetupRead(ClientSetupRecord& setup, SaupRecords& places, bool openConnection,
                           ConnectionPointer& connection) = 0;
};

/// `prjTableKeeper.clsTableKeeper`: creates a table of the station.
class clsTableKeeper
{
public:
    virtual ~clsTableKeeper() = default;

    /// Creates the table with the station's columns. `extra` is not looked at. Throws PlatformError when the
    /// database refuses, or when the station has no table of that name.
    virtual void tablecreate(ConnectionPointer& connection, const QString& table, const QString& extra) = 0;
};

/// `prjThemeShell.clsThemeShell`: the look of a form.
class clsThemeShell
{
public:
    virtual ~clsThemeShell() = default;

    /// Gives the form its colours and fonts. The handle and the connection are not needed for that here.
    virtual void skinchang(QWidget& form, int handle, ConnectionPointer& connection) = 0;
};
