#pragma once

#include "base/Color.h"
#include "generate/pixels/Raster.h"

#include <optional>

namespace Corvadine {

// Reduces `raster` to at most 256 colors without dithering. A picture with at most 256 colors keeps every
// pixel exactly. In other pictures, opaque pixels stay opaque, and fully transparent pixels stay fully
// transparent. If `exact` is given, the palette holds exactly this color, which the background needs. A
// 3-channel raster gets an opaque palette. The result is the same on any number of threads. Throws
// TError(BadInput) when the quantizer fails. REQUIRES: no `exact` for 4 channels, since a picture with
// transparency has no background around it.
TPaletteRaster ReduceColors(const TRaster& raster, std::optional<TColor> exact);

} // namespace Corvadine
