#pragma once

#include <optional>

class QGuiApplication;

namespace Corvadine {

// Whether the user has asked the desktop for dark windows, for desktops that this version of Qt does not ask
// itself: Windows' setting for apps, and the appearance portal of Linux desktops (XDG Desktop Portal,
// org.freedesktop.appearance color-scheme). Nothing if the desktop does not say, or not within a moment.
std::optional<bool> DesktopPrefersDark();

// Has the system draw the frames and captions of the windows that `application` opens from now on dark. Qt
// sees to that itself on a desktop that is dark, but Windows draws light ones where dark was asked for
// another way. Elsewhere the desktop does as it likes.
void DarkenFrames(QGuiApplication& application);

} // namespace Corvadine
