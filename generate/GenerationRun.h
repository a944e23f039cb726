#pragma once

#include "generate/Outputs.h"

#include <functional>
#include <vector>

namespace Corvadine {

// Called after each finished picture. `done` is the number of files that are ready, `total` the number of all
// files. The calls come from several threads, but never two at the same time.
using TGenProgress = std::function<void(int done, int total)>;

// Renders all outputs of `job` on `workers` threads (0: one per core) and writes them into the output folder.
// Creates the folder and its missing parents. All files are rendered and staged before the first file gets
// its name. A failure up to that point changes no file and leaves no new folder. If a file cannot get its
// name, the files before it are already replaced. Other files in the folder are left alone. The same job
// gives the same bytes on any number of threads. Returns what was written. Throws TError if the job has no
// output folder, or if a chosen source cannot be loaded. Throws TError before decoding if an output is too
// large or would overwrite a source. Throws TError if an output cannot be written.
std::vector<TOutput> RunGeneration(const TGenJob& job, int workers = 0, const TGenProgress& progress = {});

} // namespace Corvadine
