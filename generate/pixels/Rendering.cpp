#include "generate/pixels/Rendering.h"

#include "generate/pixels/IcoWriter.h"
#include "generate/pixels/Palette.h"
#include "generate/pixels/PngWriter.h"
#include "generate/pixels/Resampler.h"

#include <algorithm>
#include <utility>

namespace Corvadine {

TRenderSource::TRenderSource(QImage image)
    : FSize(image.size()), FHasAlpha(image.hasAlphaChannel()), FImage(std::move(image))
{
    if (FImage.depth() != 64)
        return;
    FPixelPairs.emplace(FImage); // before FImage is reduced to 8 bits
    FImage.convertTo(FHasAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
}

TRenderSource::TRenderSource(TPixelPairImage pairs, bool hasAlpha) : FSize(pairs.Size()), FHasAlpha(hasAlpha)
{
    FPixelPairs.emplace(std::move(pairs));
}

bool TRenderSource::IsFiltered(QSize source, QSize size, TResampleFilter filter)
{
    return size != source && !IsPickingFilter(filter);
}

TFittedImage TRenderSource::At(QSize size, TResampleFilter filter) const
{
    if (size == FSize)
        return FImage;
    if (!IsFiltered(FSize, size, filter))
        return PickPixels(FImage, size, filter);
    std::call_once(FConverted, [this] {
        if (!FPixelPairs)
            FPixelPairs.emplace(FImage);
    });
    return TFilteredImage { &*FPixelPairs, size, filter };
}

TRaster TRenderSource::WithAlphaAt(QSize size, TResampleFilter filter) const
{
    constexpr int MostShared = 128; // pixels; larger pictures would take too much memory
    if (std::max(size.width(), size.height()) > MostShared)
        return WithAlpha(At(size, filter));
    TShared* shared = nullptr;
    {
        const std::lock_guard lock(FSharedMutex);
        shared = &FShared[{ size.width(), size.height(), filter }];
    }
    std::call_once(shared->Made, [&] { shared->Raster = WithAlpha(At(size, filter)); });
    return *shared->Raster;
}

TRecipe RecipeOf(QSize source, QSize box, bool isOpaque)
{
    const QSize fitted = FittedSize(source, box);
    const bool isSquare = box.width() == box.height();
    return { fitted, isSquare ? fitted : box, isSquare && !isOpaque };
}

TRendered RenderPixels(const TRenderSource& source, const TRecipe& recipe, const TRenderOptions& options)
{
    const bool keepsAlpha = recipe.KeepsAlpha && source.HasAlpha();
    TRaster raster = keepsAlpha
        ? source.WithAlphaAt(recipe.Fitted, options.Filter)
        : FlattenedOnCanvas(source.At(recipe.Fitted, options.Filter), recipe.Canvas, options.Background);
    if (options.Format == TOutputFormat::TrueColor)
        return raster;
    const bool hasMargin = recipe.Fitted != recipe.Canvas;
    return ReduceColors(raster, hasMargin ? std::optional(options.Background) : std::nullopt);
}

QByteArray RenderPng(const TRenderSource& source, const TRecipe& recipe, const TRenderOptions& options)
{
    return std::visit([&options](const auto& pixels) { return EncodePng(pixels, options.Compression); },
        RenderPixels(source, recipe, options));
}

QByteArray RenderMainIcon(const TRenderSource& source, TResampleFilter filter)
{
    constexpr int IconCompression = 6;
    std::vector<TRaster> images;
    images.reserve(IconSizes.size());
    for (const int side : IconSizes)
        images.push_back(source.WithAlphaAt(FittedSize(source.Size(), { side, side }), filter));
    return EncodeIco(images, IconCompression);
}

bool IsTransparent(const QImage& image)
{
    if (!image.hasAlphaChannel())
        return false;
    for (int y = 0; y < image.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        if (std::any_of(row, row + image.width(), [](QRgb pixel) { return qAlpha(pixel) < 255; }))
            return true;
    }
    return false;
}

} // namespace Corvadine
