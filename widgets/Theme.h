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
// other value counts as "auto". For "auto", returns Dark if the desktop's setting (DesktopScheme.h) or the
// name in GTK_THEME is dark. Otherwise returns Auto.
TTheme ThemeOfEnvironment();

// Gives all windows one style and font, and the colors of `theme`. With TTheme::Auto the colors follow the
// platform's palette, even if the palette changes while the program runs.
void ApplyTheme(QApplication& application, TTheme theme = ThemeOfEnvironment());

// Returns whether the palette's text is lighter than its window background.
bool IsDark(const QPalette& palette);

// Returns the color behind image views and thumbnails.
QColor ContentColor(const QPalette& palette);

// Returns the contrast of two opaque colors, from 1 to 21, as
// https://www.w3.org/TR/WCAG21/#dfn-contrast-ratio defines it.
double Contrast(const QColor& one, const QColor& other);

// Returns the color of the frames around groups and controls.
QColor FrameColor(const QPalette& palette);

// Returns the color of the ring around the control that has the keyboard focus. It is the highlight, moved to
// the text's color until its contrast with windows, buttons and fields is at least 3.
QColor FocusColor(const QPalette& palette);

// Returns a mixture of two opaque colors. `share` is the share of `over` in the result, from 0 to 1.
QColor Mix(const QColor& under, const QColor& over, double share);

} // namespace Corvadine
