#pragma once

#include "contracts/ImageList.h"
#include "contracts/setup_components.h"

/// The toolbar's line icons, drawn for a dark bar; sharp at any size.
class IconList final : public ImageList
{
public:
    QStringList Keys() const override;
    QIcon Picture(const QString& key) const override;
};

/// The look of the forms: one for the whole application, so that dialogs and message boxes share it.
class ThemeShell final : public clsThemeShell
{
public:
    void skinchang(QWidget& form, int handle, ConnectionPointer& connection) override;
};
