#pragma once

#include <hwy/aligned_allocator.h>

#include <QImage>
#include <QSize>

#include <cstddef>
#include <cstdint>

// Pixels as the resampler works on them: four 16-bit channels, blue, green, red, alpha (the byte order of
// QImage::Format_ARGB32), colours multiplied by alpha. Sixteen bits, because eight would lose the colour of
// nearly transparent pixels. Both classes start their rows on 64 bytes, are move-only, and may be read from
// several threads; their constructors throw std::bad_alloc.
namespace Corvadine {

constexpr int PixelChannels = 4;

// What one of 256 levels is worth: opaque white is 255 of them.
constexpr int SourceLevel = 128;
constexpr int FilteredLevel = 64; // leaves room for overshoot, below 0 and above white

// A filtered picture, at FilteredLevel. The padding of its rows is undefined.
class TPremultipliedImage {
public:
    // Undefined pixels. REQUIRES: both sides at least 1.
    explicit TPremultipliedImage(QSize size);

    int Width() const { return FSize.width(); }
    int Height() const { return FSize.height(); }
    QSize Size() const { return FSize; }

    std::int16_t* Row(int y) { return FValues.get() + static_cast<std::size_t>(y) * FStride; }
    const std::int16_t* Row(int y) const { return FValues.get() + static_cast<std::size_t>(y) * FStride; }

private:
    QSize FSize;
    std::size_t FStride;
    hwy::AlignedFreeUniquePtr<std::int16_t[]> FValues;
};

// A source picture at SourceLevel, laid out for the horizontal pass: in each row two neighbouring pixels
// stand as B B G G R R A A, so that one instruction multiplies both by their weights. An odd last pixel is
// paired with zeros, and zeros fill the rows up to whole blocks of 64 bytes, that is four pairs.
class TPixelPairImage {
public:
    static constexpr int PairValues = 2 * PixelChannels;

    // REQUIRES: Format_ARGB32 or Format_RGB32, not null.
    explicit TPixelPairImage(const QImage& image);

    int Width() const { return FSize.width(); } // pixels
    int Height() const { return FSize.height(); }

    // Pairs of each row that can be read, the zeros at its end included; a multiple of four.
    int PairCount() const { return static_cast<int>(FStride) / PairValues; }
    const std::int16_t* Row(int y) const { return FValues.get() + static_cast<std::size_t>(y) * FStride; }

private:
    QSize FSize;
    std::size_t FStride;
    hwy::AlignedFreeUniquePtr<std::int16_t[]> FValues;
};

} // namespace Corvadine
