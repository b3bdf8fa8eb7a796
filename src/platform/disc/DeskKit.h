#pragma once

#include "contracts/cd.h"

/// Copies on a thread of its own, so that screens, camera and foot switch are served meanwhile. A copy that takes more
/// than a moment shows a modal window with its progress.
class DeskKit : public clsDeskKit
{
public:
    void FileCopyDialog(const QString& source, const QString& target) override;

private:
    bool m_cancelled = false;
};
