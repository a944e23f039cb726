#pragma once

#include <QIcon>

namespace Corvadine {

// Makes the drawings of app/icons available as ":/icons/NAME.png", of which QIcon finds the "@2x" variants.
// Call it before the first of them is asked for; a second call does nothing.
void LoadIcons();

// The program's own icon in all its sizes.
QIcon ApplicationIcon();

} // namespace Corvadine
