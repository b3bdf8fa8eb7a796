#include "precompiled_widgets.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
