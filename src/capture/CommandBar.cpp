#include "capture/CommandBar.h"

#include "contracts/ImageList.h"
#include "frame/components.h"
#include "frame/controls.h"
#include "frame/guard.h"
#include "frame/plain_text.h"

#include <QCoreApplication>
#include <QCursor>
#include <QMenu>
#include <QResizeEvent>
#include <QToolButton>

namespace {
/// The mouse left the button while its menu had it: the button would stay lit.
void ForgetPointer(QToolButton& button)
{
    if (button.rect().contains(button.mapFromGlobal(QCursor::pos())))
        return;
    button.setAttribute(Qt::WA_UnderMouse, false);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&button, &leave);
    button.update();
}
} // namespace

CommandBar::CommandBar(const QList<Button>& buttons, QWidget* parent) : QToolBar(parent)
{
    setMovable(false);
    setFloatable(false);
    setContextMenuPolicy(Qt::PreventContextMenu);
    const ImageList& pictures = UseService<ImageList>();
    for (const Button& button : buttons) {
        if (button.caption != buttons.first().caption)
            addSeparator();
        auto* tool = new QToolButton(this);
        Named(tool, button.caption, button.caption);
        tool->setText(CaptionText(button.caption));
        tool->setIcon(pictures.Picture(button.imageKey));
        tool->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        tool->setFocusPolicy(Qt::NoFocus);
        if (button.run)
            connect(tool, &QToolButton::clicked, this, GuardedSlot([run = button.run](bool) { run(); }));
        if (!button.entries.isEmpty()) {
            auto* menu = new QMenu(tool);
            for (const Entry& entry : button.entries) {
                QAction* action = menu->addAction(CaptionText(entry.caption));
                action->setObjectName(entry.caption);
                connect(action, &QAction::triggered, this, GuardedSlot([run = entry.run](bool) { run(); }));
            }
            tool->setMenu(menu);
            connect(
                menu, &QMenu::aboutToHide, tool, [tool] { ForgetPointer(*tool); }, Qt::QueuedConnection);
            tool->setPopupMode(QToolButton::MenuButtonPopup);
        }
        addWidget(tool);
        m_buttons.append(tool);
    }
}

void CommandBar::resizeEvent(QResizeEvent* event)
{
    constexpr int SeparatorWidth = 9;
    constexpr int Margins = 6;
    const qsizetype count = m_buttons.size();
    const qsizetype width = (event->size().width() - (count - 1) * SeparatorWidth - Margins) / count;
    for (QToolButton* button : m_buttons)
        button->setFixedWidth(static_cast<int>(width));
    QToolBar::resizeEvent(event);
}
