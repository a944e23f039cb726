#pragma once

#include <QString>

class QWidget;

namespace Corvadine {

// Shows the update wizard over `window` for the program in `programFolder`, until the wizard is closed.
// Returns true if an update is ready and waits for the program to end. The caller must then end the program.
// Throws TError if the update's settings are invalid.
bool CheckForUpdates(QWidget* window, const QString& programFolder);

} // namespace Corvadine
