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

    // What every worker does until nothing is left.
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

    // Blocks while all that is left waits for running tasks; nothing when there is no more to do.
    std::optional<std::size_t> Take()
    {
        std::unique_lock lock(FMutex);
        while (!FFailure) {
            const auto waiting = std::find(FStates.begin(), FStates.end(), TState::Waiting);
            if (waiting == FStates.end())
                return std::nullopt;
            for (auto index = static_cast<std::size_t>(waiting - FStates.begin()); index < FStates.size();
                 ++index) {
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
    {
        std::vector<std::jthread> helpers;
        for (int worker = 1; worker < workers; ++worker)
            helpers.emplace_back([&queue] { queue.Work(); });
        queue.Work();
    }
    queue.RethrowFailure();
}

} // namespace Corvadine
