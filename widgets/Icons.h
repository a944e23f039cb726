#pragma once

#include <QIcon>

namespace Corvadine {

// The icon of widgets/icons/NAME.png and of NAME@2x.png, which has twice the size.
// REQUIRES: both files exist.
QIcon CommandIcon(QLatin1String name);

// The program's own icon in all its sizes.
QIcon ApplicationIcon();

} // namespace Corvadine
