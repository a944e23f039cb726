#pragma once

#include <QString>

class QWidget;

namespace Corvadine {

// Shows the update wizard over `window`, for the program in `programFolder`, and returns when it is closed:
// true when an update waits for the program to end. Throws TError when the update's settings make no sense.
bool CheckForUpdates(QWidget* window, const QString& programFolder);

} // namespace Corvadine
