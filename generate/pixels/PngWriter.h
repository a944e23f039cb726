#pragma once

#include "generate/pixels/Raster.h"

#include <QByteArray>

namespace Corvadine {

// Both functions return the bytes of a PNG file (https://www.w3.org/TR/png-3/). The file is not interlaced,
// uses the row filter "None" for every row, and has only the chunks that the picture needs. It has no color
// profile, so readers take it for sRGB. `compression` is the level of libdeflate, from 0 to 12. A value below
// 0 counts as 0, and a value above 12 as 12. The project's setting, from 1 to 10, is passed unchanged. The
// same arguments give the same bytes on every system. Both functions throw TError(BadInput) for a picture
// that PNG cannot hold, and std::bad_alloc.

// Writes color type 2 for 3 channels and color type 6 for 4 channels, with 8 bits per sample.
QByteArray EncodePng(const TRaster& raster, int compression);

// Writes color type 3 with 8 bits per pixel, and a tRNS chunk if a palette entry is transparent.
QByteArray EncodePng(const TPaletteRaster& raster, int compression);

} // namespace Corvadine
