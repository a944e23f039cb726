#pragma once

#include <cstddef>
#include <cstdint>

// The inner loops of the resampler, compiled for several instruction sets of which the best one is taken at
// run time. Integer arithmetic throughout (and one float product, rounded the same everywhere): every
// instruction set gives the same values.
namespace Corvadine::Kernels {

// One row of straight BGRA bytes to premultiplied values at SourceLevel (see TPremultipliedImage).
void PremultiplyRow(const std::uint8_t* bgra, std::size_t pixels, std::int16_t* out);

// The same for a row without transparency; the fourth byte of each pixel is ignored.
void WidenOpaqueRow(const std::uint8_t* bgrx, std::size_t pixels, std::int16_t* out);

// out[i] = sum of rows[t][i] * weights[t] over the taps, brought from SourceLevel to FilteredLevel, for i <
// count. REQUIRES: taps is even; rows and out are readable and writable up to count rounded up to 32 values.
void SumRows(const std::int16_t* const* rows, const std::int16_t* weights, std::size_t taps,
    std::size_t count, std::int16_t* out);

// Weights of one axis in the order in which SumPixels reads them: for two neighbouring taps the pair of
// weights four times over, once for each channel.
struct TPixelWeights {
    const int* First;            // per target pixel: its first source pixel
    const std::int16_t* Weights; // targets x pairs x 8
    std::size_t Targets;
    std::size_t Pairs; // even
};

// Each target pixel of `out` is the weighted sum of source pixels of `row`; both at FilteredLevel.
// REQUIRES: `row` is readable for 2 * Pairs pixels from every First.
void SumPixels(const std::int16_t* row, const TPixelWeights& weights, std::int16_t* out);

} // namespace Corvadine::Kernels
