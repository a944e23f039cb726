#pragma once

#include <QColor>
#include <QPalette>

class QApplication;

namespace Corvadine {

enum class TTheme {
    Auto, // what the desktop gives
    Light,
    Dark,
};

// What the environment variable CORVADINE_THEME asks for: "light", "dark" or, as without it, "auto". On auto
// dark is asked for by the desktop's setting (DesktopScheme.h), or by a GTK_THEME that names a dark variant.
TTheme ThemeOfEnvironment();

// Gives all windows one style and font, light or dark colours and the icons of app/icons. With TTheme::Auto
// the platform's palette is followed, also when it changes while the program runs.
void ApplyTheme(QApplication& application, TTheme theme = ThemeOfEnvironment());

// Whether text is lighter than what it stands on.
bool IsDark(const QPalette& palette);

// The background of what shows content: image views, thumbnails, the progress bar.
QColor ContentColor(const QPalette& palette);

// `share` of `over` laid on `under`, from 0 to 1; both opaque.
QColor Mix(const QColor& under, const QColor& over, double share);

} // namespace Corvadine
