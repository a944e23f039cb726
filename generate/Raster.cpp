#include "generate/Raster.h"

namespace Corvadine {

TColor TColor::FromStored(int stored)
{
    const auto bits = static_cast<std::uint32_t>(stored);
    return { static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(bits >> 8),
        static_cast<std::uint8_t>(bits >> 16) };
}

int TColor::ToStored() const
{
    return Red | Green << 8 | Blue << 16;
}

TRaster::TRaster(QSize size, int channels)
    : Size(size)
    , Channels(channels)
    , Bytes(static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height())
          * static_cast<std::size_t>(channels))
{
}

} // namespace Corvadine
