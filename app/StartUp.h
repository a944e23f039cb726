#pragma once

#include <QString>

#include <functional>
#include <vector>

namespace Corvadine {

// One step of the window's start-up.
struct TStartUpStep {
    const char* Name; // what it does, for whoever reads the list
    std::function<void()> Run;
};

// Runs the steps in order. The first that throws ends the sequence: its text goes to `report`, and the window
// opens all the same.
void RunStartUp(const std::vector<TStartUpStep>& steps, const std::function<void(const QString&)>& report);

} // namespace Corvadine
