#include "generate/OutputRenderer.h"

#include <utility>

namespace Corvadine {

TOutputRenderer::TOutputRenderer(TRenderSources sources, TGenJob job)
    : FSources(std::move(sources))
    , FJob(std::move(job))
    , FOutputs(OutputsOf(FJob, FSources.Sizes()))
    , FFiles(FOutputs.size())
{
    RefuseOverwritingSources(FJob, FOutputs);
}

QByteArray TOutputRenderer::Render(const TOutput& output)
{
    QByteArray& file = FFiles[output.SameAs];
    if (file.isEmpty()) {
        RefuseHuge(output, FSources.Sizes());
        file = RenderOutput(output, FSources, FJob.Options);
    }
    return file;
}

} // namespace Corvadine
