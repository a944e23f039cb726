#pragma once

#include "generate/pixels/PremultipliedImage.h"
#include "generate/pixels/ResampleFilter.h"

#include <QImage>
#include <QSize>

#include <functional>

namespace Corvadine {

// Returns the largest size that has the aspect ratio of `source` and fits into `box`. The result may be
// larger than `source`. The side that does not fill the box is rounded to the nearest pixel, and is at least
// 1. REQUIRES: all sides at least 1.
QSize FittedSize(QSize source, QSize box);

// Called for each row of a filtered picture, from top to bottom. A row has PixelChannels values at
// FilteredLevel for each pixel (see PremultipliedImage.h), and is valid during the call.
using TFilteredRowSink = std::function<void(int y, const std::int16_t* bgra)>;

// Filters `source` to `size`. The rows keep the overshoot of kernels with negative weights: values below 0 or
// above white. Every instruction set gives the same values. REQUIRES: `size` at least 1 x 1; not
// IsPickingFilter(filter).
void Resample(
    const TPixelPairImage& source, QSize size, TResampleFilter filter, const TFilteredRowSink& sink);

// Scales `source` to `size`. Every target pixel is a copy of one source pixel, and the format stays the same.
// REQUIRES: IsPickingFilter(filter); `source` has Format_ARGB32 or Format_RGB32.
QImage PickPixels(const QImage& source, QSize size, TResampleFilter filter);

} // namespace Corvadine
