#include "platform/desktop/WheelFilter.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QEvent>
#include <QScrollBar>
#include <QTabBar>

namespace {
bool HoldsChoice(const QObject* widget)
{
    if (qobject_cast<const QAbstractSlider*>(widget) != nullptr)
        return qobject_cast<const QScrollBar*>(widget) == nullptr;
    return qobject_cast<const QComboBox*>(widget) != nullptr ||
           qobject_cast<const QAbstractSpinBox*>(widget) != nullptr || qobject_cast<const QTabBar*>(widget) != nullptr;
}
} // namespace

bool WheelFilter::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Polish && HoldsChoice(watched)) {
        auto* widget = static_cast<QWidget*>(watched);
        // Else the keys that are meant for a text go on in the list.
        if (widget->focusPolicy() == Qt::WheelFocus)
            widget->setFocusPolicy(Qt::StrongFocus);
    }
    if (event->type() != QEvent::Wheel || !HoldsChoice(watched))
        return QObject::eventFilter(watched, event);
    event->ignore(); // What they lie in gets it.
    return true;
}
