#pragma once

#include "frame/components.h"

#include <QRect>
#include <QString>

/// Makes a control by the name of its component and gives it to its parent widget, which owns it from then on.
template <class Control, class Parent>
Control& PlaceControl(const QString& component, Parent* parent)
{
    Control* control = CreateObject<Control>(component).release();
    control->setParent(parent);
    return *control;
}

/// A control of a form under its name in the system, which is also how an outside driver finds it, and its caption or
/// label, by which a screen reader does.
template <class Control>
Control* Named(Control* control, const QString& name, const QString& accessibleName)
{
    control->setObjectName(name);
    control->setAccessibleName(accessibleName);
    return control;
}
/// The same at a place of its own, in pixels.
template <class Control>
Control* Named(Control* control, const QString& name, const QString& accessibleName, const QRect& place)
{
    control->setGeometry(place);
    return Named(control, name, accessibleName);
}
