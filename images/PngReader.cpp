#include "images/PngReader.h"

#include "images/PngFilters.h"
#include "images/SourceImage.h"

#include <libdeflate.h>

#include <QRgba64>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace Corvadine {

namespace {

enum TColorType { Gray = 0, Rgb = 2, Palette = 3, GrayAlpha = 4, RgbAlpha = 6 };

constexpr QByteArrayView Signature = "\x89PNG\r\n\x1A\n";
constexpr qsizetype ChunkHeadBytes = 8; // length and type
constexpr qsizetype ChecksumBytes = 4;

std::uint32_t NumberAt(const char* bytes)
{
    return qFromBigEndian<quint32>(bytes);
}

int Sample16At(const std::uint8_t* bytes)
{
    return bytes[0] << 8 | bytes[1];
}

// Returns the number of samples of a pixel, or 0 if PNG does not allow this color type with this depth.
int ChannelsOf(int colorType, int depth)
{
    const bool isByte = depth == 8 || depth == 16;
    const bool isPacked = depth == 1 || depth == 2 || depth == 4;
    switch (colorType) {
    case Gray:
        return isByte || isPacked ? 1 : 0;
    case Palette:
        return depth == 8 || isPacked ? 1 : 0;
    case GrayAlpha:
        return isByte ? 2 : 0;
    case Rgb:
        return isByte ? 3 : 0;
    case RgbAlpha:
        return isByte ? 4 : 0;
    default:
        return 0;
    }
}

} // namespace

bool IsScreenGamma(QByteArrayView gamma)
{
    constexpr qsizetype Bytes = 4;
    const std::uint32_t number = gamma.size() == Bytes ? NumberAt(gamma.data()) : 0;
    return number > 44450 && number < 46500;
}

bool HasSrgbPrimaries(QByteArrayView primaries)
{
    constexpr std::array<int, 8> Srgb { 31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000 };
    if (primaries.size() != qsizetype { Srgb.size() } * 4)
        return false;
    for (std::size_t i = 0; i < Srgb.size(); ++i)
        if (std::abs(static_cast<int>(NumberAt(primaries.data() + i * 4) & 0x7FFFFFFF) - Srgb[i]) > 20)
            return false;
    return true;
}

struct TPngReader::TChunk {
    QByteArrayView Type;
    QByteArrayView Data;
};

TPngReader::TPngReader(QFile& file)
{
    file.seek(0);
    if (file.peek(Signature.size()) != Signature)
        return;
    FBytes = file.readAll();
    FIsPlain = ReadChunks();
}

bool TPngReader::ReadChunks()
{
    qsizetype at = Signature.size();
    bool isFirst = true;
    bool isPastPixels = false;
    while (FBytes.size() - at >= ChunkHeadBytes + ChecksumBytes) {
        char* start = FBytes.data() + at;
        const qint64 length = NumberAt(start);
        if (length > FBytes.size() - at - ChunkHeadBytes - ChecksumBytes)
            return false;
        const TChunk chunk { { start + 4, 4 }, { start + ChunkHeadBytes, static_cast<qsizetype>(length) } };
        const std::size_t checkedBytes = static_cast<std::size_t>(length) + 4;
        if (libdeflate_crc32(0, chunk.Type.data(), checkedBytes) != NumberAt(chunk.Data.end()))
            return false;
        at += ChunkHeadBytes + static_cast<qsizetype>(length) + ChecksumBytes;
        if (chunk.Type == QByteArrayView("IEND"))
            return FDeflatedBytes > 0 && (FColorType != Palette || !FPalette.empty())
                && (FIsSrgb || !FHasOtherGamma);
        const bool isPixels = chunk.Type == QByteArrayView("IDAT");
        if (isPixels) {
            if (isFirst || isPastPixels)
                return false;
            std::memmove(FBytes.data() + FDeflatedBytes, chunk.Data.data(), static_cast<std::size_t>(length));
            FDeflatedBytes += static_cast<qsizetype>(length);
        } else if (!(isFirst ? ReadHeader(chunk) : ReadOther(chunk))) {
            return false;
        }
        isPastPixels = FDeflatedBytes > 0 && !isPixels;
        isFirst = false;
    }
    return false;
}

bool TPngReader::ReadHeader(const TChunk& chunk)
{
    constexpr qsizetype HeaderBytes = 13;
    if (chunk.Type != QByteArrayView("IHDR") || chunk.Data.size() != HeaderBytes)
        return false;
    const std::uint32_t width = NumberAt(chunk.Data.data());
    const std::uint32_t height = NumberAt(chunk.Data.data() + 4);
    constexpr std::uint32_t MostSide = 0x7FFFFFFF;
    if (width == 0 || height == 0 || width > MostSide || height > MostSide)
        return false;
    FSize = { static_cast<int>(width), static_cast<int>(height) };
    FDepth = static_cast<uchar>(chunk.Data[8]);
    FColorType = static_cast<uchar>(chunk.Data[9]);
    FChannels = ChannelsOf(FColorType, FDepth);
    if (FChannels == 0 || MebibytesOf(FSize, Is16Bit() ? 8 : 4) > MaxDecodedMebibytes)
        return false;
    FRowBytes = (static_cast<std::size_t>(width) * static_cast<std::size_t>(FChannels * FDepth) + 7) / 8;
    FHasAlpha = FColorType == GrayAlpha || FColorType == RgbAlpha;
    return chunk.Data[10] == 0 && chunk.Data[11] == 0 && chunk.Data[12] == 0; // not interlaced
}

bool TPngReader::ReadOther(const TChunk& chunk)
{
    const char* data = chunk.Data.data();
    if (chunk.Type == QByteArrayView("PLTE")) {
        if (chunk.Data.size() % 3 != 0 || chunk.Data.isEmpty() || chunk.Data.size() > qsizetype { 3 } * 256)
            return false;
        FPalette.clear();
        for (const char* entry = data; entry < chunk.Data.end(); entry += 3)
            FPalette.push_back(qRgb(
                static_cast<uchar>(entry[0]), static_cast<uchar>(entry[1]), static_cast<uchar>(entry[2])));
        return true;
    }
    if (chunk.Type == QByteArrayView("tRNS"))
        return ReadTransparency(chunk);
    if (chunk.Type == QByteArrayView("sRGB"))
        FIsSrgb = true;
    else if (chunk.Type == QByteArrayView("gAMA"))
        FHasOtherGamma |= !IsScreenGamma(chunk.Data);
    else if (chunk.Type == QByteArrayView("cHRM"))
        FHasOtherGamma |= !HasSrgbPrimaries(chunk.Data);
    else if (chunk.Type == QByteArrayView("iCCP") || chunk.Type == QByteArrayView("eXIf"))
        return false;
    constexpr char Ancillary = 0x20; // a lower case letter: readers need not know the chunk
    return (chunk.Type[0] & Ancillary) != 0;
}

bool TPngReader::ReadTransparency(const TChunk& chunk)
{
    const auto* data = reinterpret_cast<const std::uint8_t*>(chunk.Data.data());
    const auto size = static_cast<std::size_t>(chunk.Data.size());
    if (FColorType == Palette) {
        if (size > FPalette.size())
            return false;
        for (std::size_t i = 0; i < size; ++i) {
            FPalette[i] = (FPalette[i] & 0xFFFFFF) | std::uint32_t { data[i] } << 24;
            FHasAlpha = FHasAlpha || data[i] < 255;
        }
        return true;
    }
    if (FHasAlpha || size != static_cast<std::size_t>(FChannels) * 2)
        return false;
    for (std::size_t i = 0; i < 3; ++i)
        FTransparent[i] = Sample16At(data + (FChannels == 3 ? i * 2 : 0));
    FHasAlpha = true;
    return true;
}

bool TPngReader::Read(std::span<std::uint8_t> memory, const TRowSink& sink)
{
    const std::span<std::uint8_t> inflated = memory.last(InflatedBytes());
    const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> decompressor(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    if (!decompressor)
        throw std::bad_alloc();
    const auto result = libdeflate_zlib_decompress(decompressor.get(), FBytes.constData(),
        static_cast<std::size_t>(FDeflatedBytes), inflated.data(), inflated.size(), nullptr);
    FBytes = {};
    if (result != LIBDEFLATE_SUCCESS)
        return false;

    const TUndoFilter undoFilter = UndoFilterFor(FChannels * FDepth);
    std::vector<std::uint8_t> row(FRowBytes + FilterOverRead);
    std::vector<std::uint8_t> above(FRowBytes + FilterOverRead);
    std::vector<std::uint64_t> pixels(static_cast<std::size_t>(FSize.width()));
    for (int y = 0; y < FSize.height(); ++y) {
        const std::uint8_t* filtered = &inflated[static_cast<std::size_t>(y) * (FRowBytes + 1)];
        std::copy_n(filtered + 1, FRowBytes, row.data());
        if (!undoFilter(filtered[0], row.data(), above.data(), FRowBytes))
            return false;
        if (Is16Bit())
            ExpandRow16(row.data(), pixels.data());
        else
            ExpandRow(row.data(), pixels.data());
        sink(y, pixels.data());
        row.swap(above);
    }
    return true;
}

void TPngReader::ExpandRow(const std::uint8_t* samples, void* pixels) const
{
    auto* out = static_cast<std::uint32_t*>(pixels);
    const auto width = static_cast<std::size_t>(FSize.width());
    switch (FColorType) {
    case RgbAlpha:
        for (std::size_t x = 0; x < width; ++x) {
            std::uint32_t rgba = 0;
            std::memcpy(&rgba, samples + x * 4, 4);
            rgba = qFromLittleEndian(rgba);
            out[x] = (rgba & 0xFF00FF00) | (rgba & 0xFF) << 16 | (rgba >> 16 & 0xFF);
        }
        break;
    case Rgb: {
        const QRgb transparent = qRgb(FTransparent[0], FTransparent[1], FTransparent[2]);
        for (std::size_t x = 0; x < width; ++x, samples += 3)
            out[x] = qRgb(samples[0], samples[1], samples[2]);
        if (FHasAlpha && (FTransparent[0] | FTransparent[1] | FTransparent[2]) < 256)
            std::replace(out, out + width, transparent, transparent & 0xFFFFFF);
        break;
    }
    case GrayAlpha:
        for (std::size_t x = 0; x < width; ++x, samples += 2)
            out[x] = qRgba(samples[0], samples[0], samples[0], samples[1]);
        break;
    default:
        ExpandPacked(samples, out);
    }
}

// Expands pixels of one sample with 1 to 8 bits. The sample is a gray or a place in the palette.
void TPngReader::ExpandPacked(const std::uint8_t* samples, std::uint32_t* pixels) const
{
    const auto depth = static_cast<unsigned>(FDepth);
    const unsigned most = (1U << depth) - 1;
    for (unsigned x = 0; x < static_cast<unsigned>(FSize.width()); ++x) {
        const unsigned bit = x * depth;
        const unsigned sample = samples[bit / 8] >> (8 - depth - bit % 8) & most;
        if (FColorType == Palette) {
            pixels[x] = sample < FPalette.size() ? FPalette[sample] : qRgb(0, 0, 0);
            continue;
        }
        const int gray = static_cast<int>(sample * 255 / most);
        pixels[x] = qRgba(gray, gray, gray, static_cast<int>(sample) == FTransparent[0] ? 0 : 255);
    }
}

void TPngReader::ExpandRow16(const std::uint8_t* samples, void* pixels) const
{
    auto* out = static_cast<QRgba64*>(pixels);
    const bool isGray = FChannels < 3;
    const bool hasChannel = FColorType == GrayAlpha || FColorType == RgbAlpha;
    const std::ptrdiff_t pixelBytes = std::ptrdiff_t { FChannels } * 2;
    for (int x = 0; x < FSize.width(); ++x, samples += pixelBytes) {
        const int red = Sample16At(samples);
        const int green = isGray ? red : Sample16At(samples + 2);
        const int blue = isGray ? red : Sample16At(samples + 4);
        const bool isTransparent =
            red == FTransparent[0] && green == FTransparent[1] && blue == FTransparent[2];
        const int opaque = isTransparent ? 0 : 0xFFFF;
        const int alpha = hasChannel ? Sample16At(samples + pixelBytes - 2) : opaque;
        out[x] = QRgba64::fromRgba64(static_cast<quint16>(red), static_cast<quint16>(green),
            static_cast<quint16>(blue), static_cast<quint16>(alpha));
    }
}

} // namespace Corvadine
