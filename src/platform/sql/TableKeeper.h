#pragma once

#include "contracts/setup_components.h"

/// Creates the station's tables from the definitions that an administrator finds under sql/, which are compiled in.
class TableKeeper : public clsTableKeeper
{
public:
    void tablecreate(ConnectionPointer& connection, const QString& table, const QString& extra) override;
};
