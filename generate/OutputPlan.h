#pragma once

#include "generate/GenJob.h"
#include "generate/Rendering.h"

#include <QStringList>

#include <vector>

namespace Corvadine {

struct TPlannedOutput {
    TGenRec Record;
    QSize Size;              // of the file in pixels; of the largest image for the Windows icon
    bool FromLaunch = false; // otherwise from the icon source
    QString SourceFile;      // empty: no source is chosen, the output is plain white
    QString Path;
};

struct TOutputPlan {
    std::vector<TPlannedOutput> Outputs; // in the order of the generation list, the Windows icon last
    QStringList Warnings; // what a user would want to know before generating, one sentence each
};

// What a run of `job` would write, and where. Decodes the sources, writes nothing. Warns as JobWarnings()
// does, when a source is smaller than the largest output made from it (with the enlargement factor), when the
// icon is not square, and when the launch image is transparent. Throws TError when a source cannot be loaded
// or an output would be too large, with the words of the run.
TOutputPlan PlanOutputs(const TGenJob& job);

} // namespace Corvadine
