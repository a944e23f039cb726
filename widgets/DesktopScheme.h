#pragma once

#include <optional>

class QGuiApplication;

namespace Corvadine {

// Returns whether the desktop is set to dark windows. Returns nothing if the desktop has no such setting or
// does not answer in time. On Windows the setting is the one for apps. On Linux it is color-scheme of
// org.freedesktop.appearance in the XDG Desktop Portal. Qt 6.4 reads neither setting itself.
std::optional<bool> DesktopPrefersDark();

// Makes Windows draw dark frames and captions for all windows that `application` opens from now on. Windows
// does not do this itself if the program is dark and the setting of Windows is light (see
// ThemeOfEnvironment()). Does nothing on other systems.
void DarkenFrames(QGuiApplication& application);

} // namespace Corvadine
