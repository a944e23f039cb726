#pragma once

#include "tests/Testing.h"

#include <QTest>

// What all tests of widgets share: Testing.h, and a main() that makes a QApplication on the offscreen
// platform. Events are real there, and no screen is needed.
