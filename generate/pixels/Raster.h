#pragma once

#include <QSize>

#include <array>
#include <cstdint>
#include <vector>

namespace Corvadine {

// A finished picture with 8 bits per channel and straight alpha. Each pixel has the bytes red, green,
// blue and, with 4 channels, alpha. The rows follow each other from top to bottom without padding, as
// PNG requires.
struct TRaster {
    QSize Size;
    int Channels; // 3 or 4
    std::vector<std::uint8_t> Bytes;

    TRaster(QSize size, int channels)
        : Size(size), Channels(channels), Bytes(static_cast<std::size_t>(size.height()) * RowBytes())
    {
    }

    std::size_t RowBytes() const
    {
        return static_cast<std::size_t>(Size.width()) * static_cast<std::size_t>(Channels);
    }
    std::uint8_t* Row(int y) { return Bytes.data() + static_cast<std::size_t>(y) * RowBytes(); }
    const std::uint8_t* Row(int y) const { return Bytes.data() + static_cast<std::size_t>(y) * RowBytes(); }
};

// A picture of at most 256 colors. Indices has one byte per pixel, in rows from top to bottom
// without padding.
struct TPaletteRaster {
    QSize Size;
    std::vector<std::array<std::uint8_t, 4>> Palette; // red, green, blue, alpha; transparent colors first
    std::vector<std::uint8_t> Indices;
};

} // namespace Corvadine
