#include "base/Color.h"

namespace Corvadine {

TColor TColor::FromStored(int stored)
{
    const auto bits = static_cast<std::uint32_t>(stored);
    return { static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(bits >> 8),
        static_cast<std::uint8_t>(bits >> 16) };
}

TColor TColor::FromRgb(std::uint32_t rgb)
{
    return { static_cast<std::uint8_t>(rgb >> 16), static_cast<std::uint8_t>(rgb >> 8),
        static_cast<std::uint8_t>(rgb) };
}

int TColor::ToStored() const
{
    return Red | Green << 8 | Blue << 16;
}

} // namespace Corvadine
