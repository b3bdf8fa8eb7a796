#pragma once

#include "contracts/findings_popups.h"

/// Shows the earlier findings, of any report, that hold all words of a text; newest first, not to be changed.
class ChartPicker final : public clsChartPicker
{
public:
    void setkleft(int twips) override { m_left = twips; }
    void setktop(int twips) override { m_top = twips; }
    void Soapp(const ClientSetupRecord& setup, ConnectionPointer& connection, const QString& text, int mode) override;

private:
    int m_left = 0;
    int m_top = 0;
};

/// Lists the phrases of a kind, with a box that narrows them down.
class OpinionPad final : public clsOpinionPad
{
public:
    void setJnleft(int twips) override { m_left = twips; }
    void setJntop(int twips) override { m_top = twips; }
    void Sosearch(const ClientSetupRecord& setup, ConnectionPointer& connection, const QString& kind,
                  QString& chosen) override;

private:
    int m_left = 0;
    int m_top = 0;
};

/// Registers the findings screen's two popups.
void RegisterFindingsPopups();
