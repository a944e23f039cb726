#pragma once

#include <hwy/aligned_allocator.h>

#include <QImage>
#include <QSize>

#include <cstddef>
#include <cstdint>

namespace Corvadine {

// Pixels as the resampler works on them: four 16-bit channels, blue, green, red, alpha (the byte order of
// QImage::Format_ARGB32), colours multiplied by alpha. Sixteen bits, because eight would lose the colour of
// nearly transparent pixels. What one of 256 levels is worth differs between a source and a filtered picture,
// whose overshoot needs room; see the two constants. Rows start on 64 bytes and are padded with zeros to a
// multiple of 64 bytes. Move-only; reading from several threads is safe.
class TPremultipliedImage {
public:
    static constexpr int Channels = 4;
    static constexpr int SourceLevel = 128; // opaque white is 255 * 128
    static constexpr int FilteredLevel =
        64; // opaque white is 255 * 64, overshoot goes below 0 and above that

    // Only the padding is set. Throws std::bad_alloc. REQUIRES: both sides at least 1.
    explicit TPremultipliedImage(QSize size);

    int Width() const { return FSize.width(); }
    int Height() const { return FSize.height(); }
    QSize Size() const { return FSize; }

    // 16-bit values from the start of one row to the next, padding included.
    std::size_t Stride() const { return FStride; }
    std::int16_t* Row(int y) { return FValues.get() + static_cast<std::size_t>(y) * FStride; }
    const std::int16_t* Row(int y) const { return FValues.get() + static_cast<std::size_t>(y) * FStride; }

private:
    QSize FSize;
    std::size_t FStride;
    hwy::AlignedFreeUniquePtr<std::int16_t[]> FValues;
};

// Values of a row of `pixels`, rounded up to whole blocks of 64 bytes.
std::size_t PaddedRowValues(std::size_t pixels);

// `image` (Format_ARGB32 or Format_RGB32) at SourceLevel.
TPremultipliedImage Premultiplied(const QImage& image);

} // namespace Corvadine
