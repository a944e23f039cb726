#include "generate/WorkQueue.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>

namespace Corvadine {

namespace {

class TWorkQueue {
public:
    explicit TWorkQueue(const std::vector<TTask>& tasks)
        : FTasks(tasks), FStates(tasks.size(), TState::Waiting)
    {
    }

    // Takes and runs tasks until no task is left or a task has failed. Every worker calls this function.
    void Work()
    {
        while (const auto index = Take())
            Run(*index);
    }

    void RethrowFailure() const
    {
        if (FFailure)
            std::rethrow_exception(FFailure);
    }

private:
    enum class TState { Waiting, Running, Done };

    // Returns the index of the next task to run. Returns nothing when all tasks are taken or a task has
    // failed. Blocks while every remaining task waits for a running task.
    std::optional<std::size_t> Take()
    {
        std::unique_lock lock(FMutex);
        while (!FFailure) {
            if (std::count(FStates.begin(), FStates.end(), TState::Waiting) == 0)
                return std::nullopt;
            for (std::size_t index = 0; index < FStates.size(); ++index) {
                if (FStates[index] == TState::Waiting && IsReady(FTasks[index])) {
                    FStates[index] = TState::Running;
                    return index;
                }
            }
            FChanged.wait(lock);
        }
        return std::nullopt;
    }

    bool IsReady(const TTask& task) const
    {
        return task.WaitsFor < 0 || FStates[static_cast<std::size_t>(task.WaitsFor)] == TState::Done;
    }

    void Run(std::size_t index)
    {
        std::exception_ptr failure;
        try {
            FTasks[index].Run();
        } catch (...) {
            failure = std::current_exception();
        }
        const std::lock_guard lock(FMutex);
        FStates[index] = TState::Done;
        if (failure && !FFailure)
            FFailure = failure;
        FChanged.notify_all();
    }

    const std::vector<TTask>& FTasks;
    std::vector<TState> FStates;
    std::exception_ptr FFailure;
    std::mutex FMutex;
    std::condition_variable FChanged;
};

} // namespace

void RunTasks(const std::vector<TTask>& tasks, int workers)
{
    TWorkQueue queue(tasks);
    const int cores = static_cast<int>(std::thread::hardware_concurrency());
    const int threads = workers > 0 ? workers : cores;
    {
        std::vector<std::jthread> helpers;
        for (int worker = 1; worker < threads; ++worker)
            helpers.emplace_back([&queue] { queue.Work(); });
        queue.Work();
    }
    queue.RethrowFailure();
}

} // namespace Corvadine
