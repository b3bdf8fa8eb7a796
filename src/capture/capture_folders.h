#pragma once

#include <QString>

class QComboBox;

/// Makes the folders of a date's year, and fills the list with the sections of this client. Throws PlatformError when a
/// folder can't be made.
void PrepareCaptureFolders(const QString& ymd, QComboBox& sections);
