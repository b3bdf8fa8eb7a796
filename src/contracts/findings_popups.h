#pragma once

#include "contracts/ado.h"
#include "contracts/ClientSetup.h"

/// `prjOpinionPad.clsOpinionPad`: the popup that offers ready-made phrases.
class clsOpinionPad
{
public:
    virtual ~clsOpinionPad() = default;

    /// Place of the popup, in twips from the corner of the window that opens it.
    virtual void setJnleft(int twips) = 0;
    virtual void setJntop(int twips) = 0;
    /// Returns when the popup is closed. `chosen` is then two characters, which aren't blanks, and the code of the
    /// phrase of that kind; empty when none was chosen. The connection may be another one afterwards.
    virtual void Sosearch(const ClientSetupRecord& setup, ConnectionPointer& connection, const QString& kind,
                          QString& chosen) = 0;
};

/// `prjChartPicker.clsChartPicker`: the popup that shows earlier findings alike to a text.
class clsChartPicker
{
public:
    virtual ~clsChartPicker() = default;

    /// Place of the popup, in twips from the corner of the window that opens it.
    virtual void setkleft(int twips) = 0;
    virtual void setktop(int twips) = 0;
    /// Returns when the popup is closed. `mode` is 3 for findings. The connection may be another one afterwards.
    virtual void Soapp(const ClientSetupRecord& setup, ConnectionPointer& connection, const QString& text,
                       int mode) = 0;
};
