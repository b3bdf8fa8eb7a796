#pragma once

#include <QStringList>

class QComboBox;

/// The sections of this client as the setup lists them, blanks around them included.
QStringList SectionsOfClient();

/// Makes the folders of a date's year, and fills the list with the sections of this client. Throws PlatformError when a
/// folder can't be made.
void PrepareCaptureFolders(const QString& ymd, QComboBox& sections);
