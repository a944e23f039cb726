#pragma once

#include "generate/GenJob.h"
#include "generate/Rendering.h"

#include <QString>

#include <functional>
#include <vector>

namespace Corvadine {

// Called on the caller's thread or a worker's, one call at a time, after each finished file.
using TGenProgress = std::function<void(int done, int total)>;

// Renders every output of `job` on `workers` threads (0: one per core) and writes them into the output
// folder, which is created with its parents when missing. All or nothing: every file is rendered and staged
// before the first one is put under its name, so a run that fails changes no file and leaves no new folder
// behind. Files that are not outputs are left alone. The same job gives the same bytes on any number of
// threads. Returns the list of what was written: BuildGenList's, then the Windows icon if Windows is ticked.
// Throws TError: a source that is named but cannot be loaded, an output that is too large (before anything is
// decoded) or cannot be written.
std::vector<TGenRec> RunGeneration(const TGenJob& job, int workers = 0, const TGenProgress& progress = {});

// The sources of a job, decoded one after the other, for those that render output by output.
TRenderSources LoadSources(const TGenJob& job);

// The job's generation list with the Windows icon, from the sources' headers alone; decodes nothing.
std::vector<TGenRec> PlanGenList(const TGenSettings& settings, const std::optional<TSourceInfo>& launch);

} // namespace Corvadine
