#pragma once

#include "tests/Testing.h"

#include <QTest>

// What every test of widgets shares: Testing.h, and a main() (in WidgetTesting.cpp) that makes a QApplication
// on the offscreen platform, so that events are real and no screen is needed.
