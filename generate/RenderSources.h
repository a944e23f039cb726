#pragma once

#include "generate/GenJob.h"
#include "generate/pixels/Rendering.h"

#include <memory>
#include <optional>

namespace Corvadine {

// Pixel sizes of a job's sources.
struct TSourceSizes {
    QSize Icon { 1, 1 };         // the size of BlankSourceImage() when no icon image is chosen
    std::optional<QSize> Launch; // empty when no launch image is chosen
};

// The decoded sources of a job. Launch is null when no launch image is chosen.
struct TRenderSources {
    std::shared_ptr<const TRenderSource> Icon;
    std::shared_ptr<const TRenderSource> Launch;

    TSourceSizes Sizes() const;
};

// Returns the sizes that the headers of the files tell. An empty path means that no image is chosen. Throws
// TError as ReadImageHeader() does.
TSourceSizes ReadSourceSizes(const QString& iconFile, const QString& launchFile);

// The outputs that a source must serve.
enum class TSourceUse {
    Any,
    FilteredOutputs, // takes less memory; a plain PNG file is read straight into the form for filters
};

// Decodes one source; an empty `file` gives BlankSourceImage(). Throws TError as LoadSourceImage() does.
std::shared_ptr<const TRenderSource> LoadSource(const QString& file, TSourceUse use = TSourceUse::Any);

// Decodes both sources of `job`, one after the other. Throws TError as LoadSource() does.
TRenderSources LoadSources(const TGenJob& job);

} // namespace Corvadine
