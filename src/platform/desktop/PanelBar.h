#pragma once

#include "contracts/StatusPanels.h"

#include <QList>

class QHBoxLayout;
class QLabel;

/// Labels side by side, in widths for the patient's data; the last panel takes the rest. The third, the name, is
/// bold and takes of that what it needs. A text that is too long is cut with dots and shown whole in the tooltip.
class PanelBar final : public StatusPanels
{
    Q_OBJECT

public:
    explicit PanelBar(QWidget* parent = nullptr);

    void setPanelCount(int panels) override;
    QString Text(int panel) const override;
    void setText(int panel, const QString& text) override;
    void setRemark(int panel, const QString& remark) override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QLabel* Panel(int panel) const { return m_panels.value(panel - 1, nullptr); }
    void ShareWidths();

    QHBoxLayout* m_row;
    QList<QLabel*> m_panels;
};
