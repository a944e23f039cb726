#pragma once

#include "base/Color.h"
#include "generate/pixels/PremultipliedImage.h"
#include "generate/pixels/Raster.h"
#include "generate/pixels/ResampleFilter.h"

#include <QImage>

#include <variant>

namespace Corvadine {

// A source that is filtered to `Size` when its rows are composed. REQUIRES: the source outlives this.
struct TFilteredImage {
    const TPixelPairImage* Source;
    QSize Size; // pixels
    TResampleFilter Filter;
};

// A source at its size in an output. A QImage is not filtered: it has all pixels of the source, or the pixels
// that a picking filter copied. Its format is Format_ARGB32 or Format_RGB32.
using TFittedImage = std::variant<QImage, TFilteredImage>;

QSize SizeOf(const TFittedImage& image);

// Returns the picture with its transparency, as 4 channels with straight alpha. In a filtered picture,
// overshoot is cut off, so that no color is brighter than its alpha allows. Its fully transparent pixels
// become all zero. A QImage keeps its colors even where alpha hides them.
TRaster WithAlpha(const TFittedImage& image);

// Returns the picture blended with `background` and centered on an opaque canvas of the color `background`,
// as 3 channels. If the margins cannot be equal, the right or lower margin is one pixel wider. REQUIRES:
// `image` fits into `canvas`.
TRaster FlattenedOnCanvas(const TFittedImage& image, QSize canvas, TColor background);

} // namespace Corvadine
