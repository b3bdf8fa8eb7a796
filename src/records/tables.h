#pragma once

#include "contracts/ado.h"

#include <QString>

/// Asks the database for the table, and lets the table keeper make it when it is missing and `create` says so. True
/// when the table is there, or its making was asked for. The connection may be another one afterwards.
bool EnsureTable(ConnectionPointer& connection, const QString& extra, const QString& table, bool create);
