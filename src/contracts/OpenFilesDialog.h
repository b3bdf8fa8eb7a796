#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// The platform's dialog for opening files, several at once.
class OpenFilesDialog
{
public:
    virtual ~OpenFilesDialog() = default;

    /// It begins in the folder of the file chosen last. `filter` as `Desktop::ShowOpenDialog` takes it. Native paths in
    /// no order; nothing when it is cancelled; an empty list when it was confirmed without a name.
    virtual std::optional<QStringList> Show(const QString& filter) = 0;
};
