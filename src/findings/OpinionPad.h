#pragma once

#include "contracts/findings_popups.h"

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
