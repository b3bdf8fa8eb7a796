#include "platform/desktop/PanelBar.h"

#include "frame/plain_text.h"

#include <QHBoxLayout>
#include <QHelpEvent>
#include <QLabel>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QToolTip>

#include <array>

using namespace Qt::StringLiterals;

namespace {
constexpr int TextMargin = 6; // Pixels left and right of a text.
constexpr int Slack = 3;      // A text's own width is broken pixels, and is cut when half a one is missing.

/// Examples of the longest usual text of each panel: chart, type, name, sex, age, telephone, resident number. The
/// eighth, the address, takes what is left.
const std::array<QString, 7> Usual{u"00000000"_s,      u"00"_s, u"남궁대한민"_s, u"M"_s, u"100세"_s, u"010-0000-0000"_s,
                                   u"000000-0000000"_s};

const std::array<QString, 8> Names{u"차트번호"_s, u"유형"_s,     u"수진자명"_s, u"성별"_s,
                                   u"나이"_s,     u"전화번호"_s, u"주민번호"_s, u"주소"_s};

/// Keeps its whole text for those who ask, and paints what has room.
class ElidedLabel final : public PlainLabel
{
public:
    using PlainLabel::PlainLabel;

    void setRemark(const QString& remark)
    {
        m_remark = remark;
        setAccessibleDescription(remark);
        setProperty("remark", !remark.isEmpty());
        style()->unpolish(this);
        style()->polish(this);
        update();
    }

    QSize minimumSizeHint() const override { return {0, 0}; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        QStyleOption option;
        option.initFrom(this);
        style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
        const QRect room = rect().adjusted(TextMargin, 0, -TextMargin, 0);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                         fontMetrics().elidedText(ComposedText(text()), Qt::ElideRight, room.width()));
    }

    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::ToolTip)
            return PlainLabel::event(event);
        QStringList lines;
        if (fontMetrics().horizontalAdvance(text()) > width() - 2 * TextMargin)
            lines << text();
        if (!m_remark.isEmpty())
            lines << m_remark;
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), ToolTipText(lines.join(u'\n')), this);
        return true;
    }

private:
    QString m_remark;
};
} // namespace

PanelBar::PanelBar(QWidget* parent) : StatusPanels(parent), m_row(new QHBoxLayout(this))
{
    m_row->setContentsMargins(0, 0, 0, 0);
    m_row->setSpacing(1);
    setPanelCount(static_cast<int>(Usual.size()) + 1);
}

void PanelBar::setPanelCount(int panels)
{
    while (m_panels.size() > qMax(0, panels))
        delete m_panels.takeLast();
    while (m_panels.size() < panels) {
        auto* panel = new ElidedLabel(this);
        panel->setObjectName(u"panel(%1)"_s.arg(m_panels.size() + 1));
        panel->setProperty("statusPanel", true);
        m_row->addWidget(panel);
        m_panels << panel;
    }
    ShareWidths();
}

void PanelBar::ShareWidths()
{
    for (int index = 0; index < m_panels.size(); ++index) {
        const bool last = index + 1 == m_panels.size();
        const QString usual =
            index < static_cast<int>(Usual.size()) ? Usual[static_cast<size_t>(index)] : u"000000000000"_s;
        const int width = fontMetrics().horizontalAdvance(usual) + 2 * TextMargin + Slack;
        m_panels[index]->setMinimumWidth(last ? 0 : width);
        m_panels[index]->setMaximumWidth(last ? QWIDGETSIZE_MAX : width);
        m_panels[index]->setSizePolicy(last ? QSizePolicy::Expanding : QSizePolicy::Fixed, QSizePolicy::Expanding);
    }
}

QString PanelBar::Text(int panel) const
{
    const QLabel* label = Panel(panel);
    return label != nullptr ? label->text() : QString();
}

void PanelBar::setText(int panel, const QString& text)
{
    QLabel* label = Panel(panel);
    if (label == nullptr)
        return;
    label->setText(text);
    label->setAccessibleName(
        u"%1: %2"_s.arg(Names[static_cast<size_t>(qBound(1, panel, int(Names.size())) - 1)], text));
}

void PanelBar::setRemark(int panel, const QString& remark)
{
    if (QLabel* label = Panel(panel))
        static_cast<ElidedLabel*>(label)->setRemark(remark);
}
