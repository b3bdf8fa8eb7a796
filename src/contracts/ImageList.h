#pragma once

#include <QIcon>
#include <QStringList>

/// Pictures of the toolbars under their keys, as the image list of a screen holds them.
class ImageList
{
public:
    virtual ~ImageList() = default;

    /// The keys, in the order of the list.
    virtual QStringList Keys() const = 0;
    /// A null icon for a key that the list doesn't have.
    virtual QIcon Picture(const QString& key) const = 0;
};
