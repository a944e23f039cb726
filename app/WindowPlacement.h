#pragma once

#include <QRect>

class QWidget;

namespace Corvadine {

class TSettingsFile;

// The position, size and state of the window when its settings were saved.
struct TWindowPlacement {
    enum TState { Normal = 0, Minimized = 1, Maximized = 2 };

    int State = Maximized;
    QRect Bounds; // of the window with its frame, on the screen, in device-independent pixels
};

TWindowPlacement ReadPlacement(const TSettingsFile& settings);
void WritePlacement(TSettingsFile& settings, const TWindowPlacement& placement);

TWindowPlacement PlacementOf(const QWidget& window);

// Restores the window's placement. A minimized window comes back maximized. A window that would lie outside
// of every screen is moved onto the primary screen. The width of the frame may become known only after the
// window is shown. The size is then corrected.
void Place(QWidget& window, const TWindowPlacement& placement);

// Centers the window on the primary screen without changing its size. A window larger than the screen starts
// at the corner of the screen.
void Center(QWidget& window);

} // namespace Corvadine
