#pragma once

#include <QString>

/// A property of a device that the operator can turn, such as its brightness.
struct PictureControl
{
    quint32 id = 0;
    QString name;
    int minimum = 0;
    int maximum = 0;
    int step = 1;
    int value = 0;
    int standard = 0; ///< The value that the driver starts with.

    bool IsSwitch() const { return minimum == 0 && maximum == 1; }
};
