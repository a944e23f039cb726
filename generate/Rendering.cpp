#include "generate/Rendering.h"

#include "base/Error.h"
#include "generate/IcoWriter.h"
#include "generate/Palette.h"
#include "generate/PngWriter.h"
#include "generate/Resampler.h"
#include "images/SourceImage.h"

#include <algorithm>
#include <utility>

namespace Corvadine {

namespace {

constexpr int IconCompression = 6;

// A launch source of absurd shape gives absurd boxes; better a sentence than half an hour of swapping.
void RefuseHuge(const TGenRec& record, QSize canvas, const std::optional<TSourceInfo>& launch)
{
    const qint64 mebibytes = MebibytesOf(canvas, PixelChannels);
    if (mebibytes <= MaxDecodedMebibytes)
        return;
    QString reason = QStringLiteral("it would have %1 pixels, which take %2 MiB, and the limit is %3 MiB")
                         .arg(SizeText(canvas))
                         .arg(mebibytes)
                         .arg(MaxDecodedMebibytes);
    if (launch)
        reason +=
            QStringLiteral("; its height follows from its width and the shape of the launch image, %1 pixels")
                .arg(SizeText(launch->Size));
    throw TError(TErrorKind::BadInput, QStringLiteral("render"), record.ID, reason);
}

} // namespace

TRenderSource::TRenderSource(QImage image) : FImage(std::move(image)) { }

bool TRenderSource::IsTransparent() const
{
    if (!FImage.hasAlphaChannel())
        return false;
    for (int y = 0; y < FImage.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(FImage.constScanLine(y));
        if (std::any_of(row, row + FImage.width(), [](QRgb pixel) { return qAlpha(pixel) < 255; }))
            return true;
    }
    return false;
}

TFittedImage TRenderSource::At(QSize size, TResampleFilter filter) const
{
    if (size == FImage.size())
        return FImage;
    if (IsPickingFilter(filter))
        return PickPixels(FImage, size, filter);
    std::call_once(FConverted, [this] { FPixelPairs.emplace(FImage); });
    return Resample(*FPixelPairs, size, filter);
}

TRecipe RecipeOf(const TGenRec& record, const TSourceInfo& icon, const std::optional<TSourceInfo>& launch)
{
    TRecipe recipe;
    recipe.FromLaunch = IsLaunchEntry(record.ID) && launch && launch->Size.width() > 1;
    const TSourceInfo& source = recipe.FromLaunch ? *launch : icon;
    const QSize box(record.Width, record.Height);
    const bool square = box.width() == box.height();
    recipe.Fitted = FittedSize(source.Size, box);
    recipe.Canvas = square ? recipe.Fitted : box;
    recipe.KeepsAlpha = square && source.HasAlpha && !IsAppStoreEntry(record.ID);
    RefuseHuge(record, recipe.Canvas, launch);
    return recipe;
}

QByteArray RenderPng(const TRenderSources& sources, const TGenSettings& settings, const TRecipe& recipe)
{
    const TRenderSource& source = recipe.FromLaunch ? *sources.Launch : *sources.Icon;
    const TFittedImage fitted = source.At(recipe.Fitted, settings.Filter);
    const TRaster raster =
        recipe.KeepsAlpha ? WithAlpha(fitted) : FlattenedOnCanvas(fitted, recipe.Canvas, settings.Background);
    if (settings.Format == TOutputFormat::TrueColor)
        return EncodePng(raster, settings.Compression);
    const bool hasMargin = recipe.Fitted != recipe.Canvas;
    return EncodePng(ReduceColors(raster, hasMargin ? std::optional(settings.Background) : std::nullopt),
        settings.Compression);
}

QByteArray RenderMainIcon(const TRenderSource& icon, TResampleFilter filter)
{
    std::vector<TRaster> images;
    images.reserve(IconSizes.size());
    for (const int side : IconSizes)
        images.push_back(WithAlpha(icon.At(FittedSize(icon.Info().Size, { side, side }), filter)));
    return EncodeIco(images, IconCompression);
}

} // namespace Corvadine
