#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QFile>
#include <QSize>

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace Corvadine {

// Whether the content of a chunk gAMA gives a gamma near 1/2.2. Many programs write this value into every
// file and mean sRGB. So this value alone is no reason to convert a picture. Primaries that differ from sRGB
// are a reason.
bool IsScreenGamma(QByteArrayView gamma);

// Whether the content of a chunk cHRM tells the primaries of sRGB, apart from rounding.
bool HasSrgbPrimaries(QByteArrayView primaries);

// Decodes a plain PNG file (https://www.w3.org/TR/png-3/), several times as fast as Qt. A file is plain if it
// is complete, not interlaced and upright, has the right checksums, and needs no conversion to sRGB. Qt
// decodes all other files, and gives the error texts for damaged files.
class TPngReader {
public:
    // Called for each row, from top to bottom. A row is an array of QRgb (straight alpha, and 255 without an
    // alpha channel), or of QRgba64 if Is16Bit(). The array is valid during the call.
    using TRowSink = std::function<void(int y, const void* pixels)>;

    // Reads the whole `file`, which is open for reading, and checks all its chunks. Moves its position.
    explicit TPngReader(QFile& file);

    // Whether the file is plain, as far as its chunks tell. All functions below REQUIRE this.
    bool IsPlain() const { return FIsPlain; }

    QSize Size() const { return FSize; } // pixels
    bool Is16Bit() const { return FDepth == 16; }

    // Whether the file has an alpha channel, a transparent color or transparent palette entries.
    bool HasAlpha() const { return FHasAlpha; }

    // The number of bytes that Read() needs: the pixels as they are in the file, and a byte for each row.
    std::size_t InflatedBytes() const { return (FRowBytes + 1) * static_cast<std::size_t>(FSize.height()); }

    // Inflates the picture into the last InflatedBytes() of `memory`. Row y is read from there before `sink`
    // gets it. So the sink may write its rows to `memory`, from the start on, if each row that it writes
    // takes at least InflatedBytes() / height. Returns false for a damaged file, perhaps after some rows were
    // given. Call this once, because it frees the bytes of the file.
    bool Read(std::span<std::uint8_t> memory, const TRowSink& sink);

private:
    struct TChunk;
    bool ReadChunks();
    bool ReadHeader(const TChunk& chunk);
    bool ReadOther(const TChunk& chunk);
    bool ReadTransparency(const TChunk& chunk);
    void ExpandRow(const std::uint8_t* samples, void* pixels) const;
    void ExpandRow16(const std::uint8_t* samples, void* pixels) const;
    void ExpandPacked(const std::uint8_t* samples, std::uint32_t* pixels) const;

    QByteArray FBytes;            // of the file; the content of its IDAT chunks is moved to the front
    qsizetype FDeflatedBytes = 0; // in the IDAT chunks
    bool FIsPlain = false;
    bool FIsSrgb = false;        // the chunk sRGB was found
    bool FHasOtherGamma = false; // a chunk gAMA or cHRM with other values than sRGB was found
    bool FHasAlpha = false;
    QSize FSize;
    int FDepth = 0; // bits per sample
    int FColorType = 0;
    int FChannels = 0;                              // samples per pixel
    std::size_t FRowBytes = 0;                      // of a row in the file, without its filter byte
    std::vector<std::uint32_t> FPalette;            // QRgb
    std::array<int, 3> FTransparent { -1, -1, -1 }; // samples of the transparent color, in the file's depth
};

} // namespace Corvadine
