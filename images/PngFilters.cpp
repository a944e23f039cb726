#include "images/PngFilters.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Corvadine {

namespace {

void AddLeft(std::uint8_t* row, std::size_t bytes, std::size_t pixelBytes)
{
    for (std::size_t i = pixelBytes; i < bytes; ++i)
        row[i] = static_cast<std::uint8_t>(row[i] + row[i - pixelBytes]);
}

void AddAbove(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes)
{
    for (std::size_t i = 0; i < bytes; ++i)
        row[i] = static_cast<std::uint8_t>(row[i] + above[i]);
}

// Adds a prediction to each byte. `predict` gets the bytes to the left, above, and above on the left. The
// size of a pixel is a constant, so that the bytes of one pixel are computed side by side.
template <std::size_t PixelBytes, class TPredict>
void AddPredicted(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, TPredict predict)
{
    std::array<int, PixelBytes> left {};
    std::array<int, PixelBytes> aboveLeft {};
    for (std::size_t i = 0; i < bytes; i += PixelBytes) {
        for (std::size_t channel = 0; channel < PixelBytes; ++channel) {
            const int up = above[i + channel];
            const int predicted = predict(left[channel], up, aboveLeft[channel]);
            left[channel] = (row[i + channel] + predicted) & 0xFF;
            row[i + channel] = static_cast<std::uint8_t>(left[channel]);
            aboveLeft[channel] = up;
        }
    }
}

int Average(int left, int above, int)
{
    return (left + above) / 2;
}

int Paeth(int left, int above, int aboveLeft)
{
    const int toLeft = std::abs(above - aboveLeft);
    const int toAbove = std::abs(left - aboveLeft);
    const int toAboveLeft = std::abs(left + above - 2 * aboveLeft);
    const int nearer = toAbove < toLeft ? above : left;
    return toAboveLeft < std::min(toLeft, toAbove) ? aboveLeft : nearer;
}

template <std::size_t PixelBytes>
void AddPaeth(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes)
{
    AddPredicted<PixelBytes>(row, above, bytes, Paeth);
}

#ifdef __SSE2__

// Most sources use this filter for most rows, with 3 or 4 bytes per pixel. This version takes all channels of
// a pixel at once, as 16-bit numbers, and needs a third of the time.

__m128i LoadPixel(const std::uint8_t* bytes)
{
    int pixel = 0;
    std::memcpy(&pixel, bytes, sizeof(pixel));
    return _mm_unpacklo_epi8(_mm_cvtsi32_si128(pixel), _mm_setzero_si128());
}

__m128i Absolute(__m128i numbers)
{
    return _mm_max_epi16(numbers, _mm_sub_epi16(_mm_setzero_si128(), numbers));
}

// Returns the bits of `yes` where `mask` is set, and the bits of `no` elsewhere.
__m128i Choose(__m128i mask, __m128i yes, __m128i no)
{
    return _mm_or_si128(_mm_and_si128(mask, yes), _mm_andnot_si128(mask, no));
}

__m128i Paeth(__m128i left, __m128i above, __m128i aboveLeft)
{
    const __m128i fromLeft = _mm_sub_epi16(above, aboveLeft);
    const __m128i fromAbove = _mm_sub_epi16(left, aboveLeft);
    const __m128i toAboveLeft = Absolute(_mm_add_epi16(fromLeft, fromAbove));
    const __m128i toLeft = Absolute(fromLeft);
    const __m128i toAbove = Absolute(fromAbove);
    const __m128i least = _mm_min_epi16(toAboveLeft, _mm_min_epi16(toLeft, toAbove));
    return Choose(
        _mm_cmpeq_epi16(toLeft, least), left, Choose(_mm_cmpeq_epi16(toAbove, least), above, aboveLeft));
}

template <std::size_t PixelBytes>
void AddPaethPixels(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes)
{
    const __m128i byteMask = _mm_set1_epi16(0xFF);
    __m128i left = _mm_setzero_si128();
    __m128i aboveLeft = _mm_setzero_si128();
    for (std::size_t i = 0; i < bytes; i += PixelBytes) {
        const __m128i up = LoadPixel(above + i);
        left = _mm_and_si128(_mm_add_epi16(LoadPixel(row + i), Paeth(left, up, aboveLeft)), byteMask);
        const int pixel = _mm_cvtsi128_si32(_mm_packus_epi16(left, left));
        std::memcpy(row + i, &pixel, PixelBytes);
        aboveLeft = up;
    }
}

template <> void AddPaeth<3>(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes)
{
    AddPaethPixels<3>(row, above, bytes);
}

template <> void AddPaeth<4>(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes)
{
    AddPaethPixels<4>(row, above, bytes);
}

#endif // __SSE2__

template <std::size_t PixelBytes>
bool UndoFilterOf(int filter, std::uint8_t* row, const std::uint8_t* above, std::size_t bytes)
{
    switch (filter) {
    case 0:
        return true;
    case 1:
        AddLeft(row, bytes, PixelBytes);
        return true;
    case 2:
        AddAbove(row, above, bytes);
        return true;
    case 3:
        AddPredicted<PixelBytes>(row, above, bytes, Average);
        return true;
    case 4:
        AddPaeth<PixelBytes>(row, above, bytes);
        return true;
    default:
        return false;
    }
}

} // namespace

TUndoFilter UndoFilterFor(int bitsPerPixel)
{
    switch (bitsPerPixel) {
    case 16:
        return UndoFilterOf<2>;
    case 24:
        return UndoFilterOf<3>;
    case 32:
        return UndoFilterOf<4>;
    case 48:
        return UndoFilterOf<6>;
    case 64:
        return UndoFilterOf<8>;
    default:
        return UndoFilterOf<1>;
    }
}

} // namespace Corvadine
