#pragma once

#include <QImage>

#include <array>
#include <cstdint>
#include <optional>

class QIODevice;

namespace Corvadine {

// The header of a bitmap (https://learn.microsoft.com/en-us/windows/win32/gdi/bitmap-storage).
struct TBitmapHeader {
    qint64 PixelsAt = 0; // bfOffBits
    qint64 Width = 0;    // pixels
    qint64 Height = 0;   // pixels, never negative
    bool IsTopDown = false;
    int Bits = 0;            // per pixel
    quint32 Compression = 0; // biCompression, for example BI_RGB
    std::array<std::uint32_t, 4>
        Masks {}; // the bits of red, green, blue and alpha; 0 where the header gives none
    qint64 RowBytes() const { return (Width * Bits + 31) / 32 * 4; } // without compression
};

// Values of biCompression.
constexpr quint32 BiRgb = 0;
constexpr quint32 BiRle8 = 1;
constexpr quint32 BiRle4 = 2;
constexpr quint32 BiBitfields = 3;

// Returns the header, or nothing if `file` is no bitmap. Moves the position of `file`.
std::optional<TBitmapHeader> ReadBitmapHeader(QIODevice& file);

// Decodes a bitmap whose channels have other numbers of bits than 8, such as 5-5-5 and 5-6-5. Qt's decoder
// leaves the low bits of such channels empty, so its white is gray. Returns a null image for all other
// bitmaps, and if memory runs out. Moves the position of `file`. REQUIRES: the file is not truncated, and has
// at most MaxDecodedMebibytes.
QImage ReadMaskedBitmap(QIODevice& file);

} // namespace Corvadine
