#pragma once

#include "contracts/setup_components.h"

#include <QStringList>

/// Creates the station's tables from the definitions that an administrator finds under sql/, which are compiled in.
class TableKeeper : public clsTableKeeper
{
public:
    void tablecreate(ConnectionPointer& connection, const QString& table, const QString& extra) override;
};

/// The statements of a script in order, without its comment lines (`--` at the beginning of a line). A statement ends
/// with a semicolon at the end of a line.
QStringList StatementsOfScript(const QString& script);
