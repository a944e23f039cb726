#pragma once

#include "generate/GenJob.h"

#include <QString>

#include <vector>

namespace Corvadine {

// Something wrong with one file of the output folder.
struct TOutputFinding {
    QString ID; // of the output
    QString Path;
    QString Text; // what is wrong: "the file does not exist"
};

// Compares the files in the output folder with what a run of `job` would write: every file is there and
// decodes as a whole, has the exact size and colour type, the App Store's image has no transparency, and the
// Windows icon holds its ten images. Empty when all is well; in the order of the generation list. Throws
// TError when a source cannot be loaded.
std::vector<TOutputFinding> CheckOutputs(const TGenJob& job);

} // namespace Corvadine
