#pragma once

#include <functional>
#include <vector>

namespace Corvadine {

// One piece of work. It may have to wait for another task.
struct TTask {
    std::function<void()> Run;
    int WaitsFor = -1; // index of the task that must be done before; -1: none
};

// Runs all tasks on `workers` threads (0: one per core), including the caller's thread, and returns when all
// tasks are done. A free worker takes the first task of the list that is ready, so list the longest tasks
// first. After a task has thrown, no further task is started. When the running tasks have ended, RunTasks()
// throws the first exception. REQUIRES: WaitsFor is the index of an earlier task.
void RunTasks(const std::vector<TTask>& tasks, int workers);

} // namespace Corvadine
