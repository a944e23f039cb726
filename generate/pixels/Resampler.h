#pragma once

#include "generate/pixels/PremultipliedImage.h"
#include "generate/pixels/ResampleFilter.h"

#include <QImage>
#include <QSize>

namespace Corvadine {

// Returns the largest size that has the aspect ratio of `source` and fits into `box`. The result may be
// larger than `source`. The side that does not fill the box is rounded to the nearest pixel, and is at least
// 1. REQUIRES: all sides at least 1.
QSize FittedSize(QSize source, QSize box);

// Filters `source` to `size`. The result keeps the overshoot of kernels with negative weights. Every
// instruction set gives the same values. REQUIRES: `size` at least 1 x 1; not IsPickingFilter(filter).
TPremultipliedImage Resample(const TPixelPairImage& source, QSize size, TResampleFilter filter);

// Scales `source` to `size`. Every target pixel is a copy of one source pixel, and the format stays the same.
// REQUIRES: IsPickingFilter(filter); `source` has Format_ARGB32 or Format_RGB32.
QImage PickPixels(const QImage& source, QSize size, TResampleFilter filter);

} // namespace Corvadine
