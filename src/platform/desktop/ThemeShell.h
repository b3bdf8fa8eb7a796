#pragma once

#include "contracts/setup_components.h"

/// The look of the forms: one for the whole application, so that dialogs and message boxes share it.
class ThemeShell final : public clsThemeShell
{
public:
    void skinchang(QWidget& form, int handle, ConnectionPointer& connection) override;
};
