#include "frame/ElidedLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QToolTip>

using namespace Qt::StringLiterals;

void ElidedLabel::setRemark(const QString& remark)
{
    m_remark = remark;
    setAccessibleDescription(remark);
    setProperty("remark", !remark.isEmpty());
    style()->unpolish(this);
    style()->polish(this);
    update();
}

void ElidedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
    const QRect room = rect().adjusted(m_textMargin, 0, -m_textMargin, 0);
    painter.setPen(palette().color(QPalette::WindowText));
    // A text far longer than its room would be measured whole.
    const QString shown = ComposedText(text().left(room.width() + 1));
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(shown, Qt::ElideRight, room.width()));
}

bool ElidedLabel::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return PlainLabel::event(event);
    QStringList lines;
    if (fontMetrics().horizontalAdvance(text()) > width() - 2 * m_textMargin)
        lines << text();
    if (!m_remark.isEmpty())
        lines << m_remark;
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), ToolTipText(lines.join(u'\n')), this);
    return true;
}
