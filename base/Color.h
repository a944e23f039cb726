#pragma once

#include <cstdint>

namespace Corvadine {

// A color as projects store it: red in bits 0 to 7, green in 8 to 15, blue in 16 to 23.
struct TColor {
    std::uint8_t Red = 255;
    std::uint8_t Green = 255;
    std::uint8_t Blue = 255;

    // Bits 24 to 31 are ignored, so the invalid color -1 is white.
    static TColor FromStored(int stored);
    // `rgb` has blue in bits 0 to 7, as in 0xRRGGBB and in Qt's QRgb. Bits 24 to 31 (alpha) are ignored.
    static TColor FromRgb(std::uint32_t rgb);
    int ToStored() const;
    bool operator==(const TColor&) const = default;
};

} // namespace Corvadine
