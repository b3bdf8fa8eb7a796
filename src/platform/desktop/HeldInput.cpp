#include "platform/desktop/HeldInput.h"

#include "contracts/desktop.h"
#include "frame/WorkThread.h"

#include <QApplication>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QWidget>
#include <QWindow>

namespace {

QWidget* WidgetOf(const QWindow& window)
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->windowHandle() == &window)
            return widget;
    }
    return nullptr;
}

/// The control under a place of a window, or one that holds it, has the property.
bool HasProperty(const QWindow& window, const QPoint& place, const char* property)
{
    QWidget* top = WidgetOf(window);
    QWidget* widget = top != nullptr ? top->childAt(place) : nullptr;
    while (widget != nullptr && !widget->property(property).toBool())
        widget = widget->parentWidget();
    return widget != nullptr;
}

using EventMaker = std::function<std::unique_ptr<QEvent>()>;

/// Makes the event again. What a pointer's event tells of its place is shared with those that follow it, so that it has
/// to be taken down by value.
EventMaker MakerOf(const QEvent& event)
{
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove: {
        const auto& mouse = static_cast<const QMouseEvent&>(event);
        return [type = mouse.type(), place = mouse.position(), scene = mouse.scenePosition(),
                global = mouse.globalPosition(), button = mouse.button(), buttons = mouse.buttons(),
                modifiers = mouse.modifiers(), device = mouse.pointingDevice()] {
            return std::make_unique<QMouseEvent>(type, place, scene, global, button, buttons, modifiers, device);
        };
    }
    case QEvent::Wheel: {
        const auto& wheel = static_cast<const QWheelEvent&>(event);
        return [place = wheel.position(), global = wheel.globalPosition(), pixels = wheel.pixelDelta(),
                angle = wheel.angleDelta(), buttons = wheel.buttons(), modifiers = wheel.modifiers(),
                phase = wheel.phase(), inverted = wheel.inverted(), device = wheel.pointingDevice()] {
            return std::make_unique<QWheelEvent>(place, global, pixels, angle, buttons, modifiers, phase, inverted,
                                                 Qt::MouseEventNotSynthesized, device);
        };
    }
    default:
        return [copy = std::shared_ptr<QEvent>(event.clone())] { return std::unique_ptr<QEvent>(copy->clone()); };
    }
}

/// A modal window that came up meanwhile keeps the others from their input, as it always does.
bool IsBlocked(const QWindow& window)
{
    const QWidget* modal = QApplication::activeModalWidget();
    return modal != nullptr && modal->windowHandle() != &window;
}

} // namespace

HeldInput::HeldInput(std::function<bool()> isOpen, std::function<void()> leave)
    : m_isOpen(std::move(isOpen)), m_leave(std::move(leave))
{
    qApp->installEventFilter(this);
}

HeldInput::~HeldInput()
{
    for (std::function<void()>& input : m_held)
        PostToScreen(std::move(input));
}

bool HeldInput::eventFilter(QObject* receiver, QEvent* event)
{
    if (m_isOpen())
        return false;
    if (event->type() == QEvent::InputMethod) {
        m_held.push_back([receiver = QPointer(receiver), copy = std::shared_ptr<QEvent>(event->clone())] {
            if (receiver)
                QCoreApplication::sendEvent(receiver, copy.get());
        });
        return true;
    }
    auto* window = receiver->isWindowType() ? static_cast<QWindow*>(receiver) : nullptr;
    return window != nullptr && Holds(*window, *event);
}

bool HeldInput::Holds(QWindow& window, QEvent& event)
{
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
        if (!HoldsMouse(window, event))
            return false;
        break;
    case QEvent::Close:
        event.ignore();
        m_held.push_back([window = QPointer(&window)] {
            if (QWidget* widget = window && !IsBlocked(*window) ? WidgetOf(*window) : nullptr)
                widget->close();
        });
        m_leave();
        return true;
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        event.ignore();
        return true;
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Wheel:
        break;
    case QEvent::ShortcutOverride:
        return true;
    default:
        return false;
    }
    m_held.push_back([window = QPointer(&window), make = MakerOf(event)] {
        if (window && !IsBlocked(*window))
            QCoreApplication::sendEvent(window, make().get());
    });
    return true;
}

bool HeldInput::HoldsMouse(const QWindow& window, const QEvent& event)
{
    const auto& mouse = static_cast<const QMouseEvent&>(event);
    if (event.type() == QEvent::MouseMove && mouse.buttons() == Qt::NoButton)
        return false;
    if (event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick) {
        m_pressWasServed = HasProperty(window, mouse.position().toPoint(), ServedWhileWaiting);
        if (HasProperty(window, mouse.position().toPoint(), LeavesWait))
            m_leave();
    }
    return !m_pressWasServed;
}
