#pragma once

#include "generate/Outputs.h"

#include <QStringList>

#include <vector>

namespace Corvadine {

struct TOutputPlan {
    std::vector<TOutput> Outputs;
    QStringList Warnings; // one sentence each, to show to the user before the run
};

// Returns what a run of `job` would write. Decodes the sources, writes nothing. The warnings begin with those
// of JobWarnings(). One more comes for each source that an output enlarges, with the largest factor. One more
// comes for an icon image that is not square, and one for a transparent launch image. Throws TError, with the
// text of RunGeneration(), if a source cannot be loaded. Does the same if an output is too large or would
// overwrite a source.
TOutputPlan PlanOutputs(const TGenJob& job);

} // namespace Corvadine
