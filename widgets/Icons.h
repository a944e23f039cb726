#pragma once

#include <QIcon>

namespace Corvadine {

// Returns the icon made of widgets/icons/NAME.png and of NAME@2x.png, the same drawing at twice the size.
// REQUIRES: both files exist.
QIcon CommandIcon(QLatin1String name);

// Returns the program's own icon in all its sizes.
QIcon ApplicationIcon();

} // namespace Corvadine
