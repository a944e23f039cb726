#pragma once

#include "base/LargeMemory.h"

#include <QImage>
#include <QSize>

#include <cstddef>
#include <cstdint>
#include <span>

// Pictures in the form that the resampler works on. A pixel has four 16-bit channels: blue, green, red, alpha
// (the byte order of QImage::Format_ARGB32). Colors are multiplied by alpha. With only eight bits, nearly
// transparent pixels would lose their color. Images are move-only and may be read from several threads.
// Constructors throw std::bad_alloc.
namespace Corvadine {

constexpr int PixelChannels = 4;

// The scales of the 16-bit values: an 8-bit value v is stored as v * SourceLevel or v * FilteredLevel.
constexpr int SourceLevel = 128;
constexpr int FilteredLevel = 64; // leaves room for overshoot: values below 0 or above white

// Rows of pixels, each starting at an address that is a multiple of 64 bytes.
class TPixelRows {
public:
    QSize Size() const { return FSize; } // pixels
    int Width() const { return FSize.width(); }
    int Height() const { return FSize.height(); }

    std::int16_t* Row(int y) { return Values() + static_cast<std::size_t>(y) * FStride; }
    const std::int16_t* Row(int y) const { return Values() + static_cast<std::size_t>(y) * FStride; }

protected:
    // Leaves the pixels undefined. REQUIRES: both sides at least 1.
    explicit TPixelRows(QSize size);

    // Number of values from the start of a row to the start of the next row.
    std::size_t Stride() const { return FStride; }

    // Returns the memory of all rows, in their order. Each row has its own part of this memory.
    std::span<std::uint8_t> Bytes() const { return FMemory.Bytes(); }

private:
    std::int16_t* Values() const { return reinterpret_cast<std::int16_t*>(FMemory.Data()); }

    QSize FSize;
    std::size_t FStride;
    TLargeMemory FMemory;
};

// Rows of a filtered picture with values at FilteredLevel. Values after the last pixel of a row are
// undefined.
class TFilteredRows : public TPixelRows {
public:
    // Leaves the pixels undefined. REQUIRES: both sides at least 1.
    explicit TFilteredRows(QSize size) : TPixelRows(size) { }
};

// A source picture with values at SourceLevel, laid out for the horizontal pass. Two neighboring pixels of a
// row are stored as B B G G R R A A, so that one instruction multiplies both pixels by their weights. Zeros
// complete an odd last pixel to a pair, and fill each row up to a multiple of 64 bytes (four pairs).
class TPixelPairImage : public TPixelRows {
public:
    static constexpr int PairValues = 2 * PixelChannels;

    // REQUIRES: Format_ARGB32, Format_RGB32, Format_RGBA64 or Format_RGBX64, not null.
    explicit TPixelPairImage(const QImage& image);

    // Leaves the pixels undefined, for SetRow(). REQUIRES: both sides at least 1.
    explicit TPixelPairImage(QSize size) : TPixelRows(size) { }

    // Sets the pixels of row `y` from `pixels`, a row of an image. `format` is the format of the image, one
    // of the four formats that the first constructor takes.
    void SetRow(int y, const void* pixels, QImage::Format format);

    using TPixelRows::Bytes;

    // Number of pairs in each row, including the zeros at its end; a multiple of four.
    int PairCount() const { return static_cast<int>(Stride()) / PairValues; }
};

} // namespace Corvadine
