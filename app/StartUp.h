#pragma once

#include <QString>

#include <functional>
#include <vector>

namespace Corvadine {

using TReport = std::function<void(const QString&)>;

// Runs `action`; the text of what it throws goes to `report`. Throws nothing itself, so Qt may call it.
// Returns whether the action came to its end.
bool RunReporting(const std::function<void()>& action, const TReport& report);

// Runs the steps of the start-up in order. The first that throws ends the sequence: its text goes to
// `report`, and the window opens all the same.
void RunStartUp(const std::vector<std::function<void()>>& steps, const TReport& report);

} // namespace Corvadine
