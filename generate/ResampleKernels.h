#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// The inner loops of the resampler, compiled for several instruction sets of which the best one is taken at
// run time. Integer arithmetic throughout (and one float product, rounded the same everywhere): every
// instruction set gives the same values.
namespace Corvadine::Kernels {

// One row of straight BGRA bytes to premultiplied values at SourceLevel, in pairs of pixels (see
// TPixelPairImage). An odd last pixel leaves the other half of its pair as it was.
void PremultiplyRow(const std::uint8_t* bgra, std::size_t pixels, std::int16_t* out);

// The same for a row without transparency; the fourth byte of each pixel is ignored.
void WidenOpaqueRow(const std::uint8_t* bgrx, std::size_t pixels, std::int16_t* out);

// Which pairs of pixels make up each target pixel of a row.
struct TPixelWeights {
    const int* First;            // per target pixel: its first pair
    const std::int16_t* Weights; // targets x pairs x 2; readable for 6 values more
    std::size_t Targets;
    std::size_t Pairs; // of each target pixel; a multiple of four
};

// Rows of a source and where their narrowed forms go.
struct TRowBatch {
    static constexpr std::size_t Most = 4;

    std::size_t Count = 0;
    std::array<const std::int16_t*, Most> Rows {};
    std::array<std::int16_t*, Most> Out {};
};

// The horizontal pass of some rows, from SourceLevel to FilteredLevel: each target pixel is the weighted sum
// of its pairs of the row. REQUIRES: the rows are readable for Pairs pairs from every First.
void SumPixelPairs(const TRowBatch& batch, const TPixelWeights& weights);

// One row of the vertical pass, at FilteredLevel: out[i] = sum of rows[t][i] * weights[t] over the taps, for
// i < count. REQUIRES: taps is even; rows and out are at 64 bytes, and readable and writable up to count
// rounded up to 32 values.
void SumRows(const std::int16_t* const* rows, const std::int16_t* weights, std::size_t taps,
    std::size_t count, std::int16_t* out);

} // namespace Corvadine::Kernels
