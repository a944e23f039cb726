#pragma once

#include <functional>
#include <vector>

namespace Corvadine {

// A piece of work that may have to wait for another one.
struct TTask {
    std::function<void()> Run;
    int WaitsFor = -1; // index of the task that must have finished first; -1: none
};

// Runs all tasks on `workers` threads (at least one; one means the caller's own) and returns when they are
// done. A free worker takes the first task in the list that is ready, so earlier tasks should be the longer
// ones. The first exception stops the handing out of tasks and is thrown here once the running ones have
// ended. REQUIRES: WaitsFor names an earlier task.
void RunTasks(const std::vector<TTask>& tasks, int workers);

} // namespace Corvadine
