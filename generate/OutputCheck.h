#pragma once

#include "generate/GenJob.h"

#include <QString>

#include <vector>

namespace Corvadine {

// A fault of one file in the output folder.
struct TOutputFinding {
    QString ID; // TOutput::ID of the output
    QString Path;
    QString Text; // what is wrong, for example "the file does not exist"
};

// Compares the files in the output folder with what a run of `job` would write. Each file must exist, decode
// completely and have the exact size and color type. Flattened images must not be transparent, and the
// Windows icon must hold its ten images. Returns the faults in the order of OutputsOf(). Throws TError when a
// source cannot be loaded.
std::vector<TOutputFinding> CheckOutputs(const TGenJob& job);

} // namespace Corvadine
