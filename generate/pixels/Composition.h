#pragma once

#include "base/Color.h"
#include "generate/pixels/PremultipliedImage.h"
#include "generate/pixels/Raster.h"

#include <QImage>

#include <variant>

namespace Corvadine {

// A source at its size in an output. A QImage holds pixels of the file itself, all of them or picked ones. A
// TPremultipliedImage is the result of a filter.
using TFittedImage = std::variant<QImage, TPremultipliedImage>;

QSize SizeOf(const TFittedImage& image);

// Returns the picture with its transparency, as 4 channels with straight alpha. In a filtered picture,
// overshoot is cut off, so that no color is brighter than its alpha allows. Its fully transparent pixels
// become all zero. A QImage keeps its colors even where alpha hides them.
TRaster WithAlpha(const TFittedImage& image);

// Returns the picture blended with `background` and centered on an opaque canvas of that color, as 3
// channels. If the margins cannot be equal, the right or lower margin is one pixel wider. REQUIRES: `image`
// fits into `canvas`.
TRaster FlattenedOnCanvas(const TFittedImage& image, QSize canvas, TColor background);

} // namespace Corvadine
