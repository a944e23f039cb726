#include "generate/pixels/ResampleKernels.h"

#include "generate/pixels/ResampleFilter.h"

#include <algorithm>

// Highway includes this file once for each instruction set. Each time the part between HWY_BEFORE_NAMESPACE
// and HWY_AFTER_NAMESPACE is compiled for another instruction set.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "generate/pixels/ResampleKernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Corvadine::Kernels::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// The horizontal pass divides by the sum of the weights, and by 2 to get from SourceLevel to FilteredLevel.
constexpr int PixelShift = TFilterTable::WeightBits + 1;
constexpr int RowShift = TFilterTable::WeightBits;

// One channel multiplied by alpha, at SourceLevel. Adding 127 rounds to the nearest integer: the exact value
// 128 * color * alpha / 255 never lies in the middle between two integers.
HWY_INLINE std::int16_t PremultiplyOne(unsigned color, unsigned alpha)
{
    return static_cast<std::int16_t>((color * alpha * 128 + 127) / 255);
}

// The index of a pixel's first channel in a row of pairs. Each further channel stands two values after the
// one before.
HWY_INLINE std::size_t PairPlace(std::size_t pixel)
{
    return pixel / 2 * 8 + pixel % 2;
}

HWY_INLINE void PremultiplyPixel(const std::uint8_t* bgra, std::int16_t* out)
{
    for (std::size_t channel = 0; channel < 3; ++channel)
        out[channel * 2] = PremultiplyOne(bgra[channel], bgra[3]);
    out[6] = PremultiplyOne(bgra[3], 255);
}

void WidenOpaqueRow(const std::uint8_t* HWY_RESTRICT bgrx, std::size_t pixels, std::int16_t* HWY_RESTRICT out)
{
    for (std::size_t i = 0; i < pixels; ++i) {
        std::int16_t* pixel = out + PairPlace(i);
        for (std::size_t channel = 0; channel < 3; ++channel)
            pixel[channel * 2] = static_cast<std::int16_t>(bgrx[i * 4 + channel] * 128);
        pixel[6] = 255 * 128;
    }
}

#if HWY_TARGET == HWY_SCALAR

// These versions use no vectors and run on processors without SSSE3. The vector versions below must give
// the same values.

// Limits a value to 16 bits, as the vector instructions do. The overshoot of both passes together may
// exceed 16 bits.
std::int16_t Saturated(std::int32_t value)
{
    return static_cast<std::int16_t>(std::clamp<std::int32_t>(value, INT16_MIN, INT16_MAX));
}

void PremultiplyRow(const std::uint8_t* HWY_RESTRICT bgra, std::size_t pixels, std::int16_t* HWY_RESTRICT out)
{
    for (std::size_t i = 0; i < pixels; ++i)
        PremultiplyPixel(bgra + i * 4, out + PairPlace(i));
}

void SumPixelPairs(const TRowBatch& batch, const TPixelWeights& weights)
{
    for (std::size_t row = 0; row < batch.Count; ++row) {
        for (std::size_t target = 0; target < weights.Targets; ++target) {
            const std::int16_t* pairs = batch.Rows[row] + static_cast<std::size_t>(weights.First[target]) * 8;
            const std::int16_t* own = weights.Weights + target * weights.Pairs * 2;
            for (std::size_t channel = 0; channel < 4; ++channel) {
                std::int32_t sum = 1 << (PixelShift - 1);
                for (std::size_t tap = 0; tap < weights.Pairs * 2; ++tap)
                    sum += pairs[tap / 2 * 8 + channel * 2 + tap % 2] * own[tap];
                batch.Out[row][target * 4 + channel] = Saturated(sum >> PixelShift);
            }
        }
    }
}

void SumRows(const std::int16_t* const* HWY_RESTRICT rows, const std::int16_t* HWY_RESTRICT weights,
    std::size_t taps, std::size_t count, std::int16_t* HWY_RESTRICT out)
{
    for (std::size_t i = 0; i < count; ++i) {
        std::int32_t sum = 1 << (RowShift - 1);
        for (std::size_t t = 0; t < taps; ++t)
            sum += rows[t][i] * weights[t];
        out[i] = Saturated(sum >> RowShift);
    }
}

#else

// Converts a vector of pixels per step. Widens BGRA bytes to 16 bits, multiplies them by their alpha, divides
// the products as floats, narrows the quotients and pairs the pixels. The results equal those of
// PremultiplyOne(): an exact quotient is at least 1/510 away from the middle between two integers, and the
// error of the float division is at most 1/1024.
void PremultiplyRow(const std::uint8_t* HWY_RESTRICT bgra, std::size_t pixels, std::int16_t* HWY_RESTRICT out)
{
    const hn::CappedTag<std::uint16_t, 16> d16;
    const hn::Rebind<std::uint8_t, decltype(d16)> d8;
    const hn::RebindToSigned<decltype(d16)> di16;
    const hn::Half<decltype(d16)> dHalf16;
    const hn::Rebind<std::int32_t, decltype(dHalf16)> di32;
    const hn::RebindToFloat<decltype(di32)> df;
    const hn::Rebind<std::int16_t, decltype(di32)> dNarrow;
    const hn::Repartition<std::uint8_t, decltype(d16)> dBytes;

    // In each block of two pixels, AlphaBytes copies a pixel's alpha to all four channels as their factor.
    // For the alpha channel itself AlphaFactors has the factor 255 instead.
    alignas(16) static constexpr std::uint8_t AlphaBytes[16] = { 6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14,
        15, 14, 15 };
    alignas(16) static constexpr std::uint16_t AlphaFactors[8] = { 0, 0, 0, 255, 0, 0, 0, 255 };
    // Reorders two pixels from BGRABGRA to BBGGRRAA.
    alignas(16) static constexpr std::uint8_t PairBytes[16] = { 0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7,
        14, 15 };
    const auto spread = hn::BitCast(d16, hn::LoadDup128(dBytes, AlphaBytes));
    const auto alphaFactor = hn::LoadDup128(d16, AlphaFactors);
    const auto isAlpha = hn::Ne(alphaFactor, hn::Zero(d16));
    const auto pairing = hn::BitCast(di16, hn::LoadDup128(dBytes, PairBytes));
    const auto divisor = hn::Set(df, 255.0F / 128.0F); // exact as a float
    const auto toLevel = [&](auto half) {
        const auto product = hn::ConvertTo(df, hn::PromoteTo(di32, half));
        return hn::DemoteTo(dNarrow, hn::NearestInt(hn::Div(product, divisor)));
    };

    const std::size_t pixelsAStep = hn::Lanes(d16) / 4;
    std::size_t i = 0;
    for (; i + pixelsAStep <= pixels; i += pixelsAStep) {
        const auto value = hn::PromoteTo(d16, hn::LoadU(d8, bgra + i * 4));
        const auto factor = hn::IfThenElse(isAlpha, alphaFactor, hn::TableLookupBytes(value, spread));
        const auto product = hn::Mul(value, factor);
        const auto low = toLevel(hn::LowerHalf(dHalf16, product));
        const auto high = toLevel(hn::UpperHalf(dHalf16, product));
        hn::StoreU(hn::TableLookupBytes(hn::Combine(di16, high, low), pairing), di16, out + i * 4);
    }
    for (; i < pixels; ++i)
        PremultiplyPixel(bgra + i * 4, out + PairPlace(i));
}

// Adds up the blocks of `sums`. Each block holds partial sums of one pixel's four channels.
template <class TTag, class TVector> HWY_INLINE auto FoldBlocks(TTag, TVector sums)
{
    if constexpr (hn::MaxLanes(TTag()) <= 4) {
        return sums;
    } else {
        const hn::Half<TTag> dHalf;
        return FoldBlocks(dHalf, hn::Add(hn::LowerHalf(dHalf, sums), hn::UpperHalf(dHalf, sums)));
    }
}

// Each block of a vector holds one pair of pixels. The pair's two weights are copied to all four channels,
// once for all rows of the batch.
template <std::size_t Rows>
HWY_INLINE void SumPixelPairsOf(const TRowBatch& batch, const TPixelWeights& weights)
{
    const hn::CappedTag<std::int16_t, 32> d16;
    const hn::RepartitionToWide<decltype(d16)> d32;
    const hn::CappedTag<std::int32_t, 4> dPixel;
    const hn::Rebind<std::int16_t, decltype(dPixel)> dPixel16;
    const hn::Repartition<std::uint8_t, decltype(d16)> dBytes;
    const std::size_t pairsAStep = hn::Lanes(d16) / 8;

    // Fills block k with four copies of one pair of weights, which are the bytes 4 k to 4 k + 3.
    alignas(64) static constexpr std::uint8_t SpreadBytes[64] = { 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2,
        3,                                                      //
        4, 5, 6, 7, 4, 5, 6, 7, 4, 5, 6, 7, 4, 5, 6, 7,         //
        8, 9, 10, 11, 8, 9, 10, 11, 8, 9, 10, 11, 8, 9, 10, 11, //
        12, 13, 14, 15, 12, 13, 14, 15, 12, 13, 14, 15, 12, 13, 14, 15 };
    const auto spread = hn::BitCast(d16, hn::Load(dBytes, SpreadBytes));
    const auto half = hn::Set(dPixel, 1 << (PixelShift - 1));
    const std::int16_t* HWY_RESTRICT own = weights.Weights;
    for (std::size_t target = 0; target < weights.Targets; ++target, own += weights.Pairs * 2) {
        const std::size_t first = static_cast<std::size_t>(weights.First[target]) * 8;
        hn::Vec<decltype(d32)> sums0[Rows];
        hn::Vec<decltype(d32)> sums1[Rows];
        for (std::size_t row = 0; row < Rows; ++row)
            sums0[row] = sums1[row] = hn::Zero(d32);
        for (std::size_t pair = 0; pair < weights.Pairs; pair += pairsAStep) {
            const auto weight = hn::TableLookupBytes(hn::LoadDup128(d16, own + pair * 2), spread);
            for (std::size_t row = 0; row < Rows; ++row)
                sums0[row] = hn::ReorderWidenMulAccumulate(
                    d32, hn::LoadU(d16, batch.Rows[row] + first + pair * 8), weight, sums0[row], sums1[row]);
        }
        for (std::size_t row = 0; row < Rows; ++row) {
            const auto sum =
                hn::Add(FoldBlocks(d32, hn::RearrangeToOddPlusEven(sums0[row], sums1[row])), half);
            hn::StoreU(hn::DemoteTo(dPixel16, hn::ShiftRight<PixelShift>(sum)), dPixel16,
                batch.Out[row] + target * 4);
        }
    }
}

void SumPixelPairs(const TRowBatch& batch, const TPixelWeights& weights)
{
    static_assert(TRowBatch::Most == 4);
    switch (batch.Count) {
    case 1:
        return SumPixelPairsOf<1>(batch, weights);
    case 2:
        return SumPixelPairsOf<2>(batch, weights);
    case 3:
        return SumPixelPairsOf<3>(batch, weights);
    default:
        return SumPixelPairsOf<4>(batch, weights);
    }
}

// Sums `Vectors` neighboring vectors of 16-bit values over all taps. Two rows are interleaved, so that one
// instruction multiplies two values by their two weights and adds the products.
template <std::size_t Vectors>
HWY_INLINE void SumRowsStep(const std::int16_t* const* HWY_RESTRICT rows,
    const std::int16_t* HWY_RESTRICT weights, std::size_t taps, std::size_t at,
    std::int16_t* HWY_RESTRICT out)
{
    const hn::ScalableTag<std::int16_t> d16;
    const hn::RepartitionToWide<decltype(d16)> d32;
    using TVector32 = hn::Vec<decltype(d32)>;
    const std::size_t lanes = hn::Lanes(d16);
    TVector32 low0[Vectors];
    TVector32 low1[Vectors];
    TVector32 high0[Vectors];
    TVector32 high1[Vectors];
    for (std::size_t v = 0; v < Vectors; ++v)
        low0[v] = low1[v] = high0[v] = high1[v] = hn::Zero(d32);
    for (std::size_t t = 0; t < taps; t += 2) {
        std::int32_t pair = 0;
        hwy::CopyBytes<sizeof(pair)>(weights + t, &pair);
        const auto weight = hn::BitCast(d16, hn::Set(d32, pair));
        for (std::size_t v = 0; v < Vectors; ++v) {
            const auto a = hn::Load(d16, rows[t] + at + v * lanes);
            const auto b = hn::Load(d16, rows[t + 1] + at + v * lanes);
            low0[v] =
                hn::ReorderWidenMulAccumulate(d32, hn::InterleaveLower(d16, a, b), weight, low0[v], low1[v]);
            high0[v] = hn::ReorderWidenMulAccumulate(
                d32, hn::InterleaveUpper(d16, a, b), weight, high0[v], high1[v]);
        }
    }
    const auto half = hn::Set(d32, 1 << (RowShift - 1));
    for (std::size_t v = 0; v < Vectors; ++v) {
        const auto low = hn::Add(hn::RearrangeToOddPlusEven(low0[v], low1[v]), half);
        const auto high = hn::Add(hn::RearrangeToOddPlusEven(high0[v], high1[v]), half);
        // Narrowing works block by block, as interleaving did, so the values are in order again.
        const auto narrow =
            hn::ReorderDemote2To(d16, hn::ShiftRight<RowShift>(low), hn::ShiftRight<RowShift>(high));
        hn::Store(narrow, d16, out + at + v * lanes);
    }
}

void SumRows(const std::int16_t* const* HWY_RESTRICT rows, const std::int16_t* HWY_RESTRICT weights,
    std::size_t taps, std::size_t count, std::int16_t* HWY_RESTRICT out)
{
    const std::size_t lanes = hn::Lanes(hn::ScalableTag<std::int16_t>());
    std::size_t at = 0;
    for (; at + 2 * lanes <= count; at += 2 * lanes)
        SumRowsStep<2>(rows, weights, taps, at, out);
    for (; at < count; at += lanes)
        SumRowsStep<1>(rows, weights, taps, at, out);
}

#endif // HWY_TARGET

} // namespace Corvadine::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Corvadine::Kernels {

HWY_EXPORT(PremultiplyRow);
HWY_EXPORT(WidenOpaqueRow);
HWY_EXPORT(SumPixelPairs);
HWY_EXPORT(SumRows);

void PremultiplyRow(const std::uint8_t* bgra, std::size_t pixels, std::int16_t* out)
{
    HWY_DYNAMIC_DISPATCH(PremultiplyRow)(bgra, pixels, out);
}

void WidenOpaqueRow(const std::uint8_t* bgrx, std::size_t pixels, std::int16_t* out)
{
    HWY_DYNAMIC_DISPATCH(WidenOpaqueRow)(bgrx, pixels, out);
}

void SumPixelPairs(const TRowBatch& batch, const TPixelWeights& weights)
{
    HWY_DYNAMIC_DISPATCH(SumPixelPairs)(batch, weights);
}

void SumRows(const std::int16_t* const* rows, const std::int16_t* weights, std::size_t taps,
    std::size_t count, std::int16_t* out)
{
    HWY_DYNAMIC_DISPATCH(SumRows)(rows, weights, taps, count, out);
}

} // namespace Corvadine::Kernels
#endif // HWY_ONCE
