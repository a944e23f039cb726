#pragma once

#include "generate/Outputs.h"
#include "generate/WorkQueue.h"

#include <functional>
#include <vector>

namespace Corvadine {

// The steps of a job with outputs, for RenderTasks().
struct TRenderSteps {
    std::function<void()> LoadLaunch;
    std::function<void()> LoadIcon;
    std::function<void(std::size_t index)> Work; // on one output, after its source is loaded
};

// Returns tasks for RunTasks(). The tasks load both sources, and then call Work() for the outputs. An output
// with the same content as an earlier output is left out. The outputs that take longest come first. REQUIRES:
// `steps` outlives the tasks.
std::vector<TTask> RenderTasks(const std::vector<TOutput>& outputs, const TRenderSteps& steps);

} // namespace Corvadine
