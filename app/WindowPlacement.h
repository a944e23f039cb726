#pragma once

#include <QRect>

class QWidget;

namespace Corvadine {

class TSettingsFile;

// Where the window stood when its settings were saved, its frame included.
struct TWindowPlacement {
    enum TState { Normal = 0, Minimised = 1, Maximised = 2 };

    int State = Maximised;
    QRect Bounds; // pixels of the screen, as they were at the moment, also while maximised
};

TWindowPlacement ReadPlacement(const TSettingsFile& settings);
void WritePlacement(TSettingsFile& settings, const TWindowPlacement& placement);

TWindowPlacement PlacementOf(const QWidget& window);

// Restores the window: minimised comes back maximised; bounds that lie off every screen are moved onto one.
// Where the system frames a window only as it is shown, its size follows then.
void Place(QWidget& window, const TWindowPlacement& placement);

// Puts the window, at the size it has, in the middle of the primary screen; a larger one begins at its
// corner.
void Centre(QWidget& window);

} // namespace Corvadine
