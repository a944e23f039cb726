#pragma once

#include "base/Color.h"
#include "generate/pixels/ResampleFilter.h"

namespace Corvadine {

// Pixel formats of the PNG files, with the codes that projects store.
enum class TOutputFormat {
    Colors256 = 1, // 8-bit palette
    TrueColor = 2, // 8 bits per sample, with alpha if the picture keeps its alpha
};

struct TRenderOptions {
    TColor Background;
    TOutputFormat Format = TOutputFormat::Colors256;
    int Compression = 6; // 1 to 10
    TResampleFilter Filter = TResampleFilter::rfMitchell;
};

} // namespace Corvadine
