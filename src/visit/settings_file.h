#pragma once

#include <QString>

/// `CapSet.ini` in the program's own folder: the station's own settings.

/// A key's value, cleaned and trimmed. `bytes` is the size of the buffer that receives it: one byte less arrives, and
/// no more than ten characters count. "0" when the file, the section or the key is missing.
QString ReadSetting(const QString& section, const QString& key, int bytes);
/// Writes one key. A failure shows nothing and leaves the old value.
void WriteSetting(const QString& section, const QString& key, const QString& value);
