#pragma once

#include <QStringView>

class LocalDatabase;

/// What a file on the local disk has, which may be an earlier release's. Names are the program's own. Throws
/// PlatformError.
bool HasTable(LocalDatabase& database, QStringView table);
/// False without the table, too.
bool HasColumn(LocalDatabase& database, QStringView table, QStringView column);
