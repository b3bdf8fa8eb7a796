#include "precompiled_widgets.h"

#include <QtTest>
#include <QtWidgets>
