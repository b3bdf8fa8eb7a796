#pragma once

#include <QWidget>

/// `MSComctlLib` status bar: numbered texts side by side. Panels count from 1.
class StatusPanels : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    virtual void setPanelCount(int panels) = 0;
    virtual QString Text(int panel) const = 0;
    virtual void setText(int panel, const QString& text) = 0;
    /// Something to mind about what the panel shows: a tint, a tooltip, and the description for a screen reader.
    /// An empty text takes it away.
    virtual void setRemark(int panel, const QString& remark) = 0;
};
