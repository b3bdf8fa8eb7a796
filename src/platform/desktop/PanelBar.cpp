#include "platform/desktop/PanelBar.h"

#include "frame/ElidedLabel.h"

#include <QHBoxLayout>
#include <QLabel>

#include <array>

using namespace Qt::StringLiterals;

namespace {
constexpr int TextMargin = 6; // Pixels left and right of a text.
constexpr int NamePanel = 3;  // Whose patient it is, is read first, and whole.
constexpr int Slack = 3;      // A text's own width is broken pixels, and is cut when half a one is missing.

/// Examples of the longest usual text of each panel: chart, type, name, sex, age, telephone, resident number. The
/// eighth, the address, takes what is left.
const std::array<QString, 7> Usual{u"00000000"_s,      u"00"_s, u"남궁대한민"_s, u"M"_s, u"100세"_s, u"010-0000-0000"_s,
                                   u"000000-0000000"_s};

const std::array<QString, 8> Names{u"차트번호"_s, u"유형"_s,     u"수진자명"_s, u"성별"_s,
                                   u"나이"_s,     u"전화번호"_s, u"주민번호"_s, u"주소"_s};
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
        panel->setTextMargin(TextMargin);
        panel->setObjectName(u"panel(%1)"_s.arg(m_panels.size() + 1));
        panel->setProperty("statusPanel", true);
        m_row->addWidget(panel);
        m_panels << panel;
        if (m_panels.size() == NamePanel) {
            QFont font = panel->font();
            font.setBold(true);
            panel->setFont(font);
        }
    }
    ShareWidths();
}

void PanelBar::ShareWidths()
{
    const auto widthFor = [](const QLabel& panel, const QString& text) {
        return panel.fontMetrics().horizontalAdvance(text) + 2 * TextMargin + Slack;
    };
    const auto usualWidth = [&](int index) {
        return widthFor(*m_panels[index],
                        index < static_cast<int>(Usual.size()) ? Usual[static_cast<size_t>(index)] : u"000000000000"_s);
    };
    int others = m_row->spacing() * static_cast<int>(m_panels.size());
    for (int index = 0; index + 1 < m_panels.size(); ++index)
        others += index + 1 == NamePanel ? 0 : usualWidth(index);
    for (int index = 0; index < m_panels.size(); ++index) {
        const bool last = index + 1 == m_panels.size();
        int width = usualWidth(index);
        // Of the last panel's room.
        if (index + 1 == NamePanel && !last)
            width = qMax(
                width, qMin(widthFor(*m_panels[index], ComposedText(m_panels[index]->text())), this->width() - others));
        m_panels[index]->setMinimumWidth(last ? 0 : width);
        m_panels[index]->setMaximumWidth(last ? QWIDGETSIZE_MAX : width);
        m_panels[index]->setSizePolicy(last ? QSizePolicy::Expanding : QSizePolicy::Fixed, QSizePolicy::Expanding);
    }
}

void PanelBar::resizeEvent(QResizeEvent* event)
{
    StatusPanels::resizeEvent(event);
    ShareWidths();
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
    if (panel == NamePanel)
        ShareWidths();
    label->setAccessibleName(
        u"%1: %2"_s.arg(Names[static_cast<size_t>(qBound(1, panel, int(Names.size())) - 1)], text));
}

void PanelBar::setRemark(int panel, const QString& remark)
{
    if (QLabel* label = Panel(panel))
        static_cast<ElidedLabel*>(label)->setRemark(remark);
}
