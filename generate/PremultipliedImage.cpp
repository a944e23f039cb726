#include "generate/PremultipliedImage.h"

#include "generate/ResampleKernels.h"

#include <algorithm>
#include <new>

namespace Corvadine {

namespace {

constexpr std::size_t BlockValues = 64 / sizeof(std::int16_t);

} // namespace

std::size_t PaddedRowValues(std::size_t pixels)
{
    const std::size_t values = pixels * TPremultipliedImage::Channels;
    return (values + BlockValues - 1) / BlockValues * BlockValues;
}

TPremultipliedImage::TPremultipliedImage(QSize size)
    : FSize(size)
    , FStride(PaddedRowValues(static_cast<std::size_t>(size.width())))
    , FValues(hwy::AllocateAligned<std::int16_t>(FStride * static_cast<std::size_t>(size.height())))
{
    if (!FValues)
        throw std::bad_alloc();
    const std::size_t used = static_cast<std::size_t>(size.width()) * Channels;
    for (int y = 0; y < size.height(); ++y)
        std::fill(Row(y) + used, Row(y) + FStride, std::int16_t { 0 });
}

TPremultipliedImage Premultiplied(const QImage& image)
{
    TPremultipliedImage result(image.size());
    const auto pixels = static_cast<std::size_t>(image.width());
    for (int y = 0; y < image.height(); ++y) {
        if (image.hasAlphaChannel())
            Kernels::PremultiplyRow(image.constScanLine(y), pixels, result.Row(y));
        else
            Kernels::WidenOpaqueRow(image.constScanLine(y), pixels, result.Row(y));
    }
    return result;
}

} // namespace Corvadine
