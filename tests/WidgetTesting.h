#pragma once

#include "tests/Testing.h"

#include <QTest>

// What all tests of widgets share: Testing.h, and a main() that makes a QApplication on the offscreen
// platform. On this platform events are real, and no screen is needed.
