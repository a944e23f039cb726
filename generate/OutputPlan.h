#pragma once

#include "generate/Outputs.h"

#include <QStringList>

#include <vector>

namespace Corvadine {

struct TOutputPlan {
    std::vector<TOutput> Outputs;
    QStringList Warnings; // one sentence each, to show to the user before the run
};

// Returns what a run of `job` would write. Decodes the sources, writes nothing. The warnings begin with the
// warnings of JobWarnings(). Each source that is enlarged adds one warning, with the largest factor. An icon
// image that is not square adds one, and a transparent launch image adds one. Throws TError if a source
// cannot be loaded, or if an output is too large or would overwrite a source. RunGeneration() throws the same
// texts.
TOutputPlan PlanOutputs(const TGenJob& job);

} // namespace Corvadine
