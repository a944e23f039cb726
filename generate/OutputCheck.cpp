#include "generate/OutputCheck.h"

#include "base/Error.h"
#include "base/Files.h"
#include "generate/GenerationRun.h"
#include "generate/Resampler.h"
#include "images/SourceImage.h"

#include <QImageReader>

namespace Corvadine {

namespace {

// The two bytes of the IHDR chunk that tell how pixels are stored; the chunk is always the first one
// (https://www.w3.org/TR/png-3/#11IHDR).
struct TPngForm {
    int BitDepth = 0;
    int ColorType = 0;

    bool operator==(const TPngForm&) const = default;
};

TPngForm PngFormOf(const QByteArray& file)
{
    constexpr qsizetype BitDepthAt = 24;
    constexpr qsizetype ColorTypeAt = 25;
    if (file.size() <= ColorTypeAt || !file.startsWith("\x89PNG\r\n\x1A\n"))
        return {};
    return { file[BitDepthAt], file[ColorTypeAt] };
}

TPngForm ExpectedForm(const TRecipe& recipe, TOutputFormat format)
{
    constexpr int Rgb = 2;
    constexpr int Palette = 3;
    constexpr int RgbAlpha = 6;
    if (format == TOutputFormat::Colors256)
        return { 8, Palette };
    return { 8, recipe.KeepsAlpha ? RgbAlpha : Rgb };
}

bool IsTransparent(const QImage& image)
{
    return TRenderSource(image).IsTransparent();
}

// What is wrong with the PNG of one output; empty if nothing is. Throws TError if it cannot be decoded.
QString PngFault(const QString& path, const TRecipe& recipe, TOutputFormat format)
{
    const QImage image = LoadSourceImage(path, TDecoderChoice::ByContent);
    const TPngForm form = PngFormOf(ReadFile(path, QStringLiteral("check")));
    const TPngForm expected = ExpectedForm(recipe, format);
    if (form == TPngForm {})
        return QStringLiteral("it is not a PNG file");
    if (image.size() != recipe.Canvas)
        return QStringLiteral("it has %1 pixels instead of %2")
            .arg(SizeText(image.size()), SizeText(recipe.Canvas));
    if (form != expected)
        return QStringLiteral("it has colour type %1 with %2 bits instead of colour type %3 with %4 bits")
            .arg(form.ColorType)
            .arg(form.BitDepth)
            .arg(expected.ColorType)
            .arg(expected.BitDepth);
    if (!recipe.KeepsAlpha && IsTransparent(image))
        return QStringLiteral("it is transparent");
    return {};
}

// The same for the Windows icon, made from a source of the given size.
QString IconFault(const QString& path, QSize source)
{
    QImageReader reader(path, "ico");
    const auto count = static_cast<std::size_t>(std::max(reader.imageCount(), 0));
    if (count != IconSizes.size())
        return QStringLiteral("it holds %1 images instead of %2").arg(count).arg(IconSizes.size());
    for (std::size_t i = 0; i < count; ++i) {
        const QSize expected = FittedSize(source, { IconSizes[i], IconSizes[i] });
        reader.jumpToImage(static_cast<int>(i));
        const QImage image = reader.read();
        if (image.isNull())
            return QStringLiteral("its image of %1 pixels is damaged").arg(SizeText(expected));
        if (image.size() != expected)
            return QStringLiteral("its image %1 has %2 pixels instead of %3")
                .arg(i + 1)
                .arg(SizeText(image.size()), SizeText(expected));
    }
    return {};
}

QString FaultOf(
    const TGenRec& record, const QString& path, const TRenderSources& sources, TOutputFormat format)
{
    if (!FileExists(path))
        return QStringLiteral("the file does not exist");
    const TSourceInfo icon = sources.Icon->Info();
    if (record.ID == MainIconID)
        return IconFault(path, icon.Size);
    const auto launch = sources.Launch ? std::optional(sources.Launch->Info()) : std::nullopt;
    try {
        return PngFault(path, RecipeOf(record, icon, launch), format);
    } catch (const TError& error) {
        return error.Reason();
    }
}

} // namespace

std::vector<TOutputFinding> CheckOutputs(const TGenJob& job)
{
    const TRenderSources sources = LoadSources(job);
    const auto launch = sources.Launch ? std::optional(sources.Launch->Info()) : std::nullopt;
    std::vector<TOutputFinding> findings;
    for (const TGenRec& record : PlanGenList(job.Settings, launch)) {
        const QString path = OutputPath(job.Settings, record);
        const QString fault = FaultOf(record, path, sources, job.Settings.Format);
        if (!fault.isEmpty())
            findings.push_back({ record.ID, path, fault });
    }
    return findings;
}

} // namespace Corvadine
