#pragma once

#include "generate/Outputs.h"
#include "generate/WorkQueue.h"

#include <functional>
#include <vector>

namespace Corvadine {

// How to work on the outputs of one job with RunTasks().
struct TRenderSteps {
    std::function<void()> LoadLaunch;
    std::function<void()> LoadIcon;
    std::function<void(std::size_t index)> Work; // on one output, after its source is loaded
};

// The tasks for RunTasks(): both sources are loaded, then Work() gets the index of each output that is its
// own TOutput::SameAs, those that take longest first. `steps` must outlive the tasks.
std::vector<TTask> RenderTasks(const std::vector<TOutput>& outputs, const TRenderSteps& steps);

} // namespace Corvadine
