#pragma once

#include "screenparts/LongTextBox.h"

/// A box for the report's long texts.
class FindingsBox : public LongTextBox
{
    Q_OBJECT

public:
    explicit FindingsBox(QWidget* parent);
};

/// The lines of a box from element 1; element 0 is empty. A box without text gives that one alone.
QStringList SplitTextLines(const FindingsBox& box);
