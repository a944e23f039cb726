#pragma once

#include "base/Color.h"
#include "generate/Raster.h"

#include <optional>

namespace Corvadine {

// `raster` reduced to at most 256 colours without dithering; a picture that has no more than that keeps every
// pixel exactly. `exact`, when given, is a colour that must survive unchanged (the background around a
// picture). A 3-channel raster gets an opaque palette. The same result on any number of threads. Throws
// TError(BadInput) when the quantiser fails.
TPaletteRaster ReduceColors(const TRaster& raster, std::optional<TColor> exact);

} // namespace Corvadine
