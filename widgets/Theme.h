#pragma once

#include <QColor>
#include <QPalette>

class QApplication;

namespace Corvadine {

enum class TTheme {
    Auto, // the colors of the desktop
    Light,
    Dark,
};

// Returns the theme that the environment variable CORVADINE_THEME asks for: "light", "dark" or "auto". Every
// other value counts as "auto". With "auto" the theme is Dark if the desktop's setting (DesktopScheme.h) or
// the name in GTK_THEME is dark, and otherwise Auto.
TTheme ThemeOfEnvironment();

// Gives all windows one style and font, and the colors of `theme`. With TTheme::Auto the colors follow the
// platform's palette, also when the palette changes while the program runs.
void ApplyTheme(QApplication& application, TTheme theme = ThemeOfEnvironment());

// Whether text is lighter than its background.
bool IsDark(const QPalette& palette);

// The background of image views and thumbnails.
QColor ContentColor(const QPalette& palette);

// Mixes two opaque colors. `share`, from 0 to 1, is the share of `over` in the result.
QColor Mix(const QColor& under, const QColor& over, double share);

} // namespace Corvadine
