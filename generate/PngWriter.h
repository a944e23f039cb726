#pragma once

#include "generate/Raster.h"

#include <QByteArray>

namespace Corvadine {

// PNG files (https://www.w3.org/TR/png-3/) as bytes: not interlaced, row filter "None" throughout, no chunks
// but those that the picture needs. The picture is taken to be sRGB.
// `compression` is the project's 1 to 10; deflate ends at 9, so 10 is written as 9.
// Throws TError(BadInput) for a picture that PNG cannot hold, std::bad_alloc.

// Colour type 2 (3 channels) or 6 (4 channels), 8 bits per sample.
QByteArray EncodePng(const TRaster& raster, int compression);

// Colour type 3, 8 bits per pixel, with a tRNS chunk when a palette entry is transparent.
QByteArray EncodePng(const TPaletteRaster& raster, int compression);

} // namespace Corvadine
