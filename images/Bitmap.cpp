#include "images/Bitmap.h"

#include <QIODevice>
#include <QtEndian>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

namespace Corvadine {

namespace {

constexpr qsizetype FileHeaderBytes = 14; // BITMAPFILEHEADER, before all other headers
constexpr std::uint32_t FullChannel = 255;

// The bits of one channel in a pixel, and the factor that brings their value to 0 ... 255.
struct TChannel {
    explicit TChannel(std::uint32_t mask)
        : Mask(mask), Shift(mask == 0 ? 0 : std::countr_zero(mask)), Scale(ScaleOf(mask >> Shift))
    {
    }

    static double ScaleOf(std::uint32_t most) { return most == 0 ? 0 : double { FullChannel } / most; }

    int Of(std::uint32_t pixel) const
    {
        return static_cast<int>(std::lround(((pixel & Mask) >> Shift) * Scale));
    }

    std::uint32_t Mask;
    int Shift;
    double Scale;
};

bool IsMasked(const TBitmapHeader& header)
{
    const bool isFull = std::all_of(header.Masks.begin(), header.Masks.end(),
        [](std::uint32_t mask) { return mask == 0 || mask >> std::countr_zero(mask) == FullChannel; });
    return !isFull && (header.Bits == 16 || header.Bits == 32);
}

} // namespace

std::optional<TBitmapHeader> ReadBitmapHeader(QIODevice& file)
{
    constexpr quint32 CoreHeaderBytes = 12;  // the header of OS/2 bitmaps, which has smaller fields
    constexpr quint32 InfoHeaderBytes = 40;  // newer headers begin with the same fields and are longer
    constexpr quint32 AlphaHeaderBytes = 56; // the first header with a mask for alpha
    file.seek(0);
    const QByteArray bytes = file.read(FileHeaderBytes + AlphaHeaderBytes);
    const auto word = [&](qsizetype at) { return qFromLittleEndian<quint16>(bytes.data() + at); };
    const auto number = [&](qsizetype at) {
        return bytes.size() >= at + 4 ? qFromLittleEndian<quint32>(bytes.data() + at) : 0;
    };
    const quint32 headerBytes = number(FileHeaderBytes); // bcSize, biSize
    const bool isCore = headerBytes == CoreHeaderBytes;
    const qsizetype needed = FileHeaderBytes + qsizetype { isCore ? CoreHeaderBytes : InfoHeaderBytes };
    if (!bytes.startsWith("BM") || (!isCore && headerBytes < InfoHeaderBytes) || bytes.size() < needed)
        return std::nullopt;
    TBitmapHeader header;
    header.PixelsAt = number(10);
    if (isCore) {
        header.Width = word(18);  // bcWidth
        header.Height = word(20); // bcHeight
        header.Bits = word(24);   // bcBitCount
        return header;
    }
    const auto height = static_cast<qint32>(number(22)); // biHeight, negative if the top row comes first
    header.Width = static_cast<qint32>(number(18));      // biWidth
    header.Height = std::abs(qint64 { height });
    header.IsTopDown = height < 0;
    header.Bits = word(28);          // biBitCount
    header.Compression = number(30); // biCompression
    if (header.Compression == BiBitfields)
        header.Masks = { number(54), number(58), number(62),
            headerBytes >= AlphaHeaderBytes ? number(66) : 0 };
    else if (header.Compression == BiRgb && header.Bits == 16)
        header.Masks = { 0x7C00, 0x03E0, 0x001F, 0 };
    return header;
}

QImage ReadMaskedBitmap(QIODevice& file)
{
    const auto header = ReadBitmapHeader(file);
    if (!header || !IsMasked(*header))
        return {};
    const TChannel red(header->Masks[0]);
    const TChannel green(header->Masks[1]);
    const TChannel blue(header->Masks[2]);
    const TChannel alpha(header->Masks[3]);
    const int opaque = alpha.Mask == 0 ? FullChannel : 0;
    QImage image(static_cast<int>(header->Width), static_cast<int>(header->Height),
        alpha.Mask == 0 ? QImage::Format_RGB32 : QImage::Format_ARGB32);
    file.seek(header->PixelsAt);
    for (int row = 0; row < image.height(); ++row) {
        const QByteArray bytes = file.read(header->RowBytes());
        if (bytes.size() < header->RowBytes())
            return {};
        auto* const to =
            reinterpret_cast<QRgb*>(image.scanLine(header->IsTopDown ? row : image.height() - 1 - row));
        for (qsizetype x = 0; x < image.width(); ++x) {
            const std::uint32_t pixel = header->Bits == 16 ? qFromLittleEndian<quint16>(bytes.data() + x * 2)
                                                           : qFromLittleEndian<quint32>(bytes.data() + x * 4);
            to[x] = qRgba(red.Of(pixel), green.Of(pixel), blue.Of(pixel), opaque + alpha.Of(pixel));
        }
    }
    return image;
}

} // namespace Corvadine
