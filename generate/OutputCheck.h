#pragma once

#include "generate/GenJob.h"
#include "generate/ImageFault.h"

#include <QString>

#include <vector>

namespace Corvadine {

// How much of each file is checked.
enum class TCheckDepth {
    Form,   // size, color type, number of images
    Pixels, // the same, and every pixel against a new rendering
};

// A fault of one file in the output folder.
struct TOutputFinding {
    QString ID; // TOutput::ID of the output
    QString Path;
    TImageFault Fault;
};

// A source that cannot be loaded. The pixels of its outputs are then not known, so only the form is checked.
// If the size of the source is not known, the size of its outputs is not checked either.
struct TUnreadableSource {
    QString Name; // "icon" or "launch"
    QString Path;
    QString Reason;
    int OutputCount = 0; // number of its outputs
};

struct TOutputCheck {
    std::vector<TOutputFinding> Findings; // in the order of OutputsOf()
    std::vector<TUnreadableSource> UnreadableSources;
    int OutputCount = 0;
    int ComparedCount = 0; // number of outputs whose source was rendered again for the comparison
};

// Compares the files in the output folder with what a run of `job` would write: each file must exist, decode
// completely and have the exact size and color type. Flattened images must not be transparent, and the
// Windows icon must hold its ten images with their masks. With TCheckDepth::Pixels all pixels must equal the
// pixels that a run would write. The compression may differ. Works on `workers` threads (0: one per core).
TOutputCheck CheckOutputs(const TGenJob& job, TCheckDepth depth = TCheckDepth::Pixels, int workers = 0);

} // namespace Corvadine
