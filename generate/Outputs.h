#pragma once

#include "generate/Catalogue.h"
#include "generate/RenderSources.h"

#include <QString>

#include <vector>

namespace Corvadine {

// One file that a job writes.
struct TOutput {
    TOutputKind Kind = TOutputKind::Icon;
    QString ID;              // name of the element in the project file that receives Path
    QSize Box;               // pixels; the source is fitted into this box
    bool FromLaunch = false; // true: rendered from the launch source; false: from the icon source
    TRecipe Recipe;          // for the Windows icon, the recipe of its largest image
    QString Path;
    std::size_t SameAs = 0; // index of the first output with the same content, which may be this output

    // Returns the output as an entry of the window's generation list.
    TGenRec Record() const;
};

// Returns the outputs of `job`, in the order in which they are generated and entered into the project file.
// The Windows icon comes last. A launch source that is one pixel wide is not rendered; the icon source takes
// its place.
std::vector<TOutput> OutputsOf(const TGenJob& job, const TSourceSizes& sizes);

// Throws TError(BadInput), naming the output, if the picture of `output` takes more memory than
// MaxDecodedMebibytes. `sizes` is used for the message only.
void RefuseHuge(const TOutput& output, const TSourceSizes& sizes);

// Throws TError(BadInput) if a run would overwrite a source of the job with one of `outputs`. Later runs
// would otherwise read the smaller picture as their source. The paths of the source and the output may differ
// by links, hard links or spelling.
void RefuseOverwritingSources(const TGenJob& job, const std::vector<TOutput>& outputs);

// Whether `output`, or an image of the Windows icon, shows pixels of its source without filtering them.
// `source` is the size of the source.
bool CopiesPixels(const TOutput& output, QSize source, TResampleFilter filter);

// Returns the content of the file of `output`. Throws TError as RenderPng() and RenderMainIcon() do.
// REQUIRES: `sources` has the source that `output` is rendered from.
QByteArray RenderOutput(const TOutput& output, const TRenderSources& sources, const TRenderOptions& options);

} // namespace Corvadine
