#pragma once

#include "contracts/ImageList.h"

/// The toolbar's line icons, drawn for a dark bar; sharp at any size.
class IconList final : public ImageList
{
public:
    QStringList Keys() const override;
    QIcon Picture(const QString& key) const override;
};
