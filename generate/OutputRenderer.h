#pragma once

#include "generate/Outputs.h"

#include <QByteArray>

#include <vector>

namespace Corvadine {

// Renders the outputs of one job, one per call, so that the window can show each file once it is written.
// Outputs with the same content are rendered once. The sources are given already decoded, so the job's source
// files are not read. Use on one thread.
class TOutputRenderer {
public:
    // Throws TError as RefuseOverwritingSources() does.
    TOutputRenderer(TRenderSources sources, TGenJob job);

    const TGenJob& Job() const { return FJob; }
    const std::vector<TOutput>& Outputs() const { return FOutputs; }

    // Returns the content of the file of `output`, which is one of Outputs(). Throws TError as RefuseHuge()
    // and RenderOutput() do.
    QByteArray Render(const TOutput& output);

private:
    TRenderSources FSources;
    TGenJob FJob;
    std::vector<TOutput> FOutputs;
    std::vector<QByteArray> FFiles; // indexed by TOutput::SameAs; an element is empty until rendered
};

} // namespace Corvadine
