#include "generate/pixels/PremultipliedImage.h"

#include "generate/pixels/ResampleKernels.h"

#include <QRgba64>

#include <algorithm>

namespace Corvadine {

namespace {

// Number of values in a row, rounded up to a multiple of 64 bytes.
std::size_t PaddedValues(int width)
{
    constexpr std::size_t BlockValues = 64 / sizeof(std::int16_t);
    const std::size_t values = static_cast<std::size_t>(width) * PixelChannels;
    return (values + BlockValues - 1) / BlockValues * BlockValues;
}

// Returns a channel multiplied by alpha, at SourceLevel and rounded. `color` and `alpha` have 16 bits.
std::int16_t PremultiplyDeep(quint64 color, quint64 alpha)
{
    constexpr quint64 Full = 0xFFFF;
    constexpr quint64 Opaque = quint64 { 255 } * SourceLevel;
    return static_cast<std::int16_t>((color * alpha * Opaque + Full * Full / 2) / (Full * Full));
}

// Does without vectors, because pictures with 16 bits per channel are rare.
void PremultiplyDeepRow(const QRgba64* pixels, std::size_t count, std::int16_t* out)
{
    for (std::size_t i = 0; i < count; ++i) {
        const QRgba64 pixel = pixels[i];
        std::int16_t* channels = out + i / 2 * TPixelPairImage::PairValues + i % 2;
        channels[0] = PremultiplyDeep(pixel.blue(), pixel.alpha());
        channels[2] = PremultiplyDeep(pixel.green(), pixel.alpha());
        channels[4] = PremultiplyDeep(pixel.red(), pixel.alpha());
        channels[6] = PremultiplyDeep(pixel.alpha(), 0xFFFF);
    }
}

} // namespace

TPixelRows::TPixelRows(QSize size)
    : FSize(size)
    , FStride(PaddedValues(size.width()))
    , FMemory(static_cast<std::size_t>(size.height()) * FStride * sizeof(std::int16_t))
{
}

TPixelPairImage::TPixelPairImage(const QImage& image) : TPixelRows(image.size())
{
    for (int y = 0; y < Height(); ++y)
        SetRow(y, image.constScanLine(y), image.format());
}

void TPixelPairImage::SetRow(int y, const void* pixels, QImage::Format format)
{
    const auto count = static_cast<std::size_t>(Width());
    const std::size_t wholePairs = count / 2 * PairValues;
    std::fill(Row(y) + wholePairs, Row(y) + Stride(), std::int16_t { 0 });
    switch (format) {
    case QImage::Format_ARGB32:
        return Kernels::PremultiplyRow(static_cast<const std::uint8_t*>(pixels), count, Row(y));
    case QImage::Format_RGB32:
        return Kernels::WidenOpaqueRow(static_cast<const std::uint8_t*>(pixels), count, Row(y));
    default:
        PremultiplyDeepRow(static_cast<const QRgba64*>(pixels), count, Row(y));
    }
}

} // namespace Corvadine
