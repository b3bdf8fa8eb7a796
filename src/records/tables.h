#pragma once

#include "contracts/ado.h"

#include <QString>

/// Asks the database for the table, and lets the table keeper make it when it is missing and `create` says so. True
/// when the table is there, or its making was asked for, whether or not it worked: why it didn't is then in `fault`.
/// The connection may be another one afterwards.
bool EnsureTable(ConnectionPointer& connection, const QString& extra, const QString& table, bool create,
                 QString* fault = nullptr);
