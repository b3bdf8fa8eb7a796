#pragma once

#include "frame/plain_text.h"

/// Keeps its whole text for those who ask, paints what has room from its beginning, and shows the whole in a tooltip.
class ElidedLabel : public PlainLabel
{
public:
    using PlainLabel::PlainLabel;

    /// Pixels left and right of the text.
    void setTextMargin(int pixels) { m_textMargin = pixels; }
    /// Something to mind about the text: in the tooltip, the description for a screen reader, and the style sheet's
    /// property "remark". An empty one takes it away.
    void setRemark(const QString& remark);

    QSize minimumSizeHint() const override { return {0, 0}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    QString m_remark;
    int m_textMargin = 0;
};
