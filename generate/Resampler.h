#pragma once

#include "generate/PremultipliedImage.h"
#include "generate/ResampleFilter.h"

#include <QImage>
#include <QSize>

namespace Corvadine {

// The largest size with the aspect ratio of `source` that fits into `box`, enlarging too; the side that does
// not fill the box is rounded to the nearest pixel and at least 1. REQUIRES: all sides at least 1.
QSize FittedSize(QSize source, QSize box);

// `source` filtered to `size`. Overshoot of kernels with negative lobes is
// kept; whoever turns the result into bytes limits it. The same values on every instruction set.
// REQUIRES: size at least 1 x 1; the filter mixes (is not a picking one).
TPremultipliedImage Resample(const TPixelPairImage& source, QSize size, TResampleFilter filter);

// `source` at `size`, every target pixel a copy of one source pixel. REQUIRES: IsPickingFilter(filter);
// Format_ARGB32 or Format_RGB32, which the result keeps.
QImage PickPixels(const QImage& source, QSize size, TResampleFilter filter);

} // namespace Corvadine
