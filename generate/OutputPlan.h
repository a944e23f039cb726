#pragma once

#include "generate/Outputs.h"

#include <QStringList>

#include <vector>

namespace Corvadine {

struct TOutputPlan {
    std::vector<TOutput> Outputs;
    QStringList Warnings; // one sentence each, to show to the user before the run
};

// Returns what a run of `job` would write. Decodes the sources, but writes nothing. The warnings are those of
// JobWarnings(), and one for each source about its largest enlargement. Two more are for an icon image that
// is not square and for a transparent launch image. Throws TError, with the same text as RunGeneration(),
// when a source cannot be loaded or an output would be too large.
TOutputPlan PlanOutputs(const TGenJob& job);

} // namespace Corvadine
