#pragma once

#include <QObject>

/// Keeps the wheel from choosing anything in the whole application: over a closed list, a tab, a slider or a box of
/// numbers or dates a notch scrolls what they lie in, if that can be scrolled; it doesn't change them, and gives them
/// no keyboard. An open list scrolls as ever.
class WheelFilter : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override;
};
