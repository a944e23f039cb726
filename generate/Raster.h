#pragma once

#include <QByteArray>
#include <QSize>

#include <array>
#include <cstdint>
#include <vector>

namespace Corvadine {

// A finished picture, 8 bits per channel, straight alpha: rows of red, green, blue (and alpha) bytes from top
// to bottom without padding, as PNG wants them.
struct TRaster {
    QSize Size;
    int Channels = 3; // 3 or 4
    std::vector<std::uint8_t> Bytes;

    TRaster() = default;
    TRaster(QSize size, int channels);

    std::size_t RowBytes() const
    {
        return static_cast<std::size_t>(Size.width()) * static_cast<std::size_t>(Channels);
    }
    std::uint8_t* Row(int y) { return Bytes.data() + static_cast<std::size_t>(y) * RowBytes(); }
    const std::uint8_t* Row(int y) const { return Bytes.data() + static_cast<std::size_t>(y) * RowBytes(); }
};

// A picture of at most 256 colours: one index byte per pixel, rows as above.
struct TPaletteRaster {
    QSize Size;
    std::vector<std::array<std::uint8_t, 4>>
        Palette; // red, green, blue, alpha; those with transparency first
    std::vector<std::uint8_t> Indices;
};

} // namespace Corvadine
