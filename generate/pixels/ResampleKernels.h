#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// The inner loops of the resampler, compiled for several instruction sets; the best one is chosen at run
// time. All instruction sets give the same values. The arithmetic is on integers, except for one float
// division, which is rounded alike everywhere.
namespace Corvadine::Kernels {

// Converts one row of straight BGRA bytes to premultiplied values at SourceLevel, in pairs of pixels (see
// TPixelPairImage). After an odd last pixel, the other half of its pair is not written.
void PremultiplyRow(const std::uint8_t* bgra, std::size_t pixels, std::int16_t* out);

// Converts a row without transparency in the same layout. The fourth byte of each pixel is ignored.
void WidenOpaqueRow(const std::uint8_t* bgrx, std::size_t pixels, std::int16_t* out);

// Which pairs of pixels make up each target pixel of a row.
struct TPixelWeights {
    const int* First;            // the first pair of each target pixel
    const std::int16_t* Weights; // Targets x Pairs x 2 values; 6 values after these must be readable, too
    std::size_t Targets;
    std::size_t Pairs; // number of pairs for each target pixel; a multiple of four
};

// Some rows of a source, and where to write them after they are scaled to the target's width.
struct TRowBatch {
    static constexpr std::size_t Most = 4;

    std::size_t Count = 0;
    std::array<const std::int16_t*, Most> Rows {};
    std::array<std::int16_t*, Most> Out {};
};

// The horizontal pass for some rows, from SourceLevel to FilteredLevel. Each target pixel is the weighted sum
// of its pairs in the source row. REQUIRES: weights.Pairs pairs can be read from each pair in weights.First
// on.
void SumPixelPairs(const TRowBatch& batch, const TPixelWeights& weights);

// One row of the vertical pass, at FilteredLevel: out[i] = sum of rows[t][i] * weights[t] over all t < taps,
// for i < count. REQUIRES: `taps` is even. `out` and each of `rows` start at a multiple of 64 bytes and have
// room for `count` rounded up to a multiple of 32.
void SumRows(const std::int16_t* const* rows, const std::int16_t* weights, std::size_t taps,
    std::size_t count, std::int16_t* out);

} // namespace Corvadine::Kernels
