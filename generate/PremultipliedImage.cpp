#include "generate/PremultipliedImage.h"

#include "generate/ResampleKernels.h"

#include <algorithm>
#include <new>

namespace Corvadine {

namespace {

// `values` rounded up to whole blocks of 64 bytes.
std::size_t PaddedValues(std::size_t values)
{
    constexpr std::size_t BlockValues = 64 / sizeof(std::int16_t);
    return (values + BlockValues - 1) / BlockValues * BlockValues;
}

hwy::AlignedFreeUniquePtr<std::int16_t[]> Allocate(std::size_t rows, std::size_t stride)
{
    auto values = hwy::AllocateAligned<std::int16_t>(rows * stride);
    if (!values)
        throw std::bad_alloc();
    return values;
}

std::size_t RowValues(QSize size)
{
    return static_cast<std::size_t>(size.width()) * PixelChannels;
}

} // namespace

TPremultipliedImage::TPremultipliedImage(QSize size)
    : FSize(size)
    , FStride(PaddedValues(RowValues(size)))
    , FValues(Allocate(static_cast<std::size_t>(size.height()), FStride))
{
}

TPixelPairImage::TPixelPairImage(const QImage& image)
    : FSize(image.size())
    , FStride(PaddedValues(RowValues(FSize)))
    , FValues(Allocate(static_cast<std::size_t>(image.height()), FStride))
{
    const auto convert = image.hasAlphaChannel() ? Kernels::PremultiplyRow : Kernels::WidenOpaqueRow;
    const auto pixels = static_cast<std::size_t>(FSize.width());
    const std::size_t wholePairs = pixels / 2 * PairValues;
    for (int y = 0; y < FSize.height(); ++y) {
        std::int16_t* row = FValues.get() + static_cast<std::size_t>(y) * FStride;
        std::fill(row + wholePairs, row + FStride, std::int16_t { 0 });
        convert(image.constScanLine(y), pixels, row);
    }
}

} // namespace Corvadine
