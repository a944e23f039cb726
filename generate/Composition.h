#pragma once

#include "base/Color.h"
#include "generate/PremultipliedImage.h"
#include "generate/Raster.h"

#include <QImage>

#include <variant>

namespace Corvadine {

// A source brought to its size in an output: untouched or picked pixels as they were in the file, or filtered
// ones.
using TFittedImage = std::variant<QImage, TPremultipliedImage>;

QSize SizeOf(const TFittedImage& image);

// The picture with its transparency: 4 channels, straight alpha. A filtered one has its overshoot limited, so
// that no colour is brighter than its alpha allows, and is all zero where its alpha is 0. Pixels as they were
// in the file keep the colours that they hide.
TRaster WithAlpha(const TFittedImage& image);

// The picture blended with `background` by its alpha and centred on an opaque canvas of that colour: 3
// channels. When a margin is odd, its extra pixel goes right or below. REQUIRES: the image fits into
// `canvas`.
TRaster FlattenedOnCanvas(const TFittedImage& image, QSize canvas, TColor background);

} // namespace Corvadine
