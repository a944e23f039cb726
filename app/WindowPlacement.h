#pragma once

#include <QRect>

class QWidget;

namespace Corvadine {

class TSettingsFile;

// Where the window stood when its settings were saved.
struct TWindowPlacement {
    enum TState { Normal = 0, Minimised = 1, Maximised = 2 };

    int State = Maximised;
    QRect Bounds; // pixels of the screen, as they were at the moment, also while maximised
};

TWindowPlacement ReadPlacement(const TSettingsFile& settings);
void WritePlacement(TSettingsFile& settings, const TWindowPlacement& placement);

TWindowPlacement PlacementOf(const QWidget& window);

// Restores the window: minimised comes back maximised; bounds that lie off every screen are moved onto one.
void Place(QWidget& window, const TWindowPlacement& placement);

} // namespace Corvadine
