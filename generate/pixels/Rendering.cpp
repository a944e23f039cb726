#include "generate/pixels/Rendering.h"

#include "generate/pixels/IcoWriter.h"
#include "generate/pixels/Palette.h"
#include "generate/pixels/PngWriter.h"
#include "generate/pixels/Resampler.h"

#include <algorithm>
#include <utility>

namespace Corvadine {

TRenderSource::TRenderSource(QImage image) : FImage(std::move(image)) { }

TFittedImage TRenderSource::At(QSize size, TResampleFilter filter) const
{
    if (size == FImage.size())
        return FImage;
    if (IsPickingFilter(filter))
        return PickPixels(FImage, size, filter);
    std::call_once(FConverted, [this] { FPixelPairs.emplace(FImage); });
    return Resample(*FPixelPairs, size, filter);
}

TRecipe RecipeOf(QSize source, QSize box, bool isOpaque)
{
    const QSize fitted = FittedSize(source, box);
    const bool isSquare = box.width() == box.height();
    return { fitted, isSquare ? fitted : box, isSquare && !isOpaque };
}

TRendered RenderPixels(const TRenderSource& source, const TRecipe& recipe, const TRenderOptions& options)
{
    const TFittedImage fitted = source.At(recipe.Fitted, options.Filter);
    const bool keepsAlpha = recipe.KeepsAlpha && source.Image().hasAlphaChannel();
    TRaster raster =
        keepsAlpha ? WithAlpha(fitted) : FlattenedOnCanvas(fitted, recipe.Canvas, options.Background);
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
        images.push_back(WithAlpha(source.At(FittedSize(source.Image().size(), { side, side }), filter)));
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
