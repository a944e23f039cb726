#include "generate/RenderTasks.h"

#include <algorithm>
#include <utility>

namespace Corvadine {

// Returns the indices of the outputs to render. Outputs that take longest come first. Outputs equal to an
// earlier output are left out.
static std::vector<std::size_t> LongestFirst(const std::vector<TOutput>& outputs)
{
    std::vector<std::size_t> indices;
    for (std::size_t i = 0; i < outputs.size(); ++i)
        if (outputs[i].SameAs == i)
            indices.push_back(i);
    const auto effort = [&outputs](std::size_t index) {
        const QSize canvas = outputs[index].Recipe.Canvas;
        return std::pair(
            outputs[index].Kind == TOutputKind::MainIcon, qint64 { canvas.width() } * canvas.height());
    };
    std::stable_sort(indices.begin(), indices.end(),
        [&effort](std::size_t a, std::size_t b) { return effort(a) > effort(b); });
    return indices;
}

std::vector<TTask> RenderTasks(const std::vector<TOutput>& outputs, const TRenderSteps& steps)
{
    // The launch source comes first, because it is usually the larger one.
    constexpr int LaunchTask = 0;
    constexpr int IconTask = 1;
    std::vector<TTask> tasks { { steps.LoadLaunch }, { steps.LoadIcon } };
    for (const std::size_t index : LongestFirst(outputs))
        tasks.push_back(
            { [&steps, index] { steps.Work(index); }, outputs[index].FromLaunch ? LaunchTask : IconTask });
    return tasks;
}

} // namespace Corvadine
