#include "generate/pixels/PremultipliedImage.h"

#include "generate/pixels/ResampleKernels.h"

#include <algorithm>
#include <new>

namespace Corvadine {

namespace {

// Number of values in a row, rounded up to a multiple of 64 bytes.
std::size_t PaddedValues(int width)
{
    constexpr std::size_t BlockValues = 64 / sizeof(std::int16_t);
    const std::size_t values = static_cast<std::size_t>(width) * PixelChannels;
    return (values + BlockValues - 1) / BlockValues * BlockValues;
}

} // namespace

TPixelRows::TPixelRows(QSize size)
    : FSize(size)
    , FStride(PaddedValues(size.width()))
    , FValues(hwy::AllocateAligned<std::int16_t>(static_cast<std::size_t>(size.height()) * FStride))
{
    if (!FValues)
        throw std::bad_alloc();
}

TPixelPairImage::TPixelPairImage(const QImage& image) : TPixelRows(image.size())
{
    const auto convert = image.hasAlphaChannel() ? Kernels::PremultiplyRow : Kernels::WidenOpaqueRow;
    const auto pixels = static_cast<std::size_t>(Width());
    const std::size_t wholePairs = pixels / 2 * PairValues;
    for (int y = 0; y < Height(); ++y) {
        std::fill(Row(y) + wholePairs, Row(y) + Stride(), std::int16_t { 0 });
        convert(image.constScanLine(y), pixels, Row(y));
    }
}

} // namespace Corvadine
