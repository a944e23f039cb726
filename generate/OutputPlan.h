#pragma once

#include "generate/Outputs.h"

#include <QStringList>

#include <vector>

namespace Corvadine {

struct TOutputPlan {
    std::vector<TOutput> Outputs;
    QStringList Warnings; // one sentence each, to show to the user before the run
};

// What a run of `job` would write. Decodes the sources, writes nothing. The warnings are those of
// JobWarnings(), and one each for a source that an output enlarges (with the largest factor), for an icon
// image that is not square, and for a transparent launch image. Throws TError, with the same text as
// RunGeneration(), when a source cannot be loaded, or when an output would be too large or would overwrite a
// source.
TOutputPlan PlanOutputs(const TGenJob& job);

} // namespace Corvadine
