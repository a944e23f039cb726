#pragma once

#include "base/LargeMemory.h"

#include <QSize>

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Corvadine {

// A finished picture with 8 bits per channel and straight alpha. Each pixel has the bytes red, green, blue
// and, with 4 channels, alpha. Before each row stands a byte 0, the row filter "None" of PNG, so that the
// rows can be deflated as they are. Copies share their pixels.
class TRaster {
public:
    // Leaves the pixels undefined.
    TRaster(QSize size, int channels)
        : FSize(size), FChannels(channels), FMemory(std::make_shared<TLargeMemory>(ByteCount()))
    {
        for (int y = 0; y < size.height(); ++y)
            Row(y)[-1] = 0;
    }

    QSize Size() const { return FSize; }       // pixels
    int Channels() const { return FChannels; } // 3 or 4

    std::uint8_t* Row(int y) { return FMemory->Data() + static_cast<std::size_t>(y) * (RowBytes() + 1) + 1; }
    const std::uint8_t* Row(int y) const
    {
        return FMemory->Data() + static_cast<std::size_t>(y) * (RowBytes() + 1) + 1;
    }

    // The number of bytes of one row, without the filter byte before the row.
    std::size_t RowBytes() const
    {
        return static_cast<std::size_t>(FSize.width()) * static_cast<std::size_t>(FChannels);
    }

    // All rows from top to bottom, each behind its filter byte.
    std::span<const std::uint8_t> FilteredRows() const { return FMemory->Bytes(); }

private:
    std::size_t ByteCount() const { return static_cast<std::size_t>(FSize.height()) * (RowBytes() + 1); }

    QSize FSize;
    int FChannels;
    std::shared_ptr<const TLargeMemory> FMemory;
};

// A picture of at most 256 colors. Indices has one byte per pixel, in rows from top to bottom
// without padding.
struct TPaletteRaster {
    QSize Size;
    std::vector<std::array<std::uint8_t, 4>> Palette; // red, green, blue, alpha; transparent colors first
    std::vector<std::uint8_t> Indices;
};

} // namespace Corvadine
