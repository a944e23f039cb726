#include "generate/Outputs.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/PathRules.h"
#include "generate/pixels/Resampler.h"
#include "images/SourceImage.h"

#include <algorithm>
#include <tuple>

namespace Corvadine {

namespace {

TOutput OutputOf(const TCatalogueEntry& entry, const TGenJob& job, const TSourceSizes& sizes)
{
    TOutput output;
    output.Kind = entry.Kind;
    output.ID = entry.ID.toString();
    output.Box = BoxOf(entry, job.TwoxSize, sizes.Launch.value_or(NoLaunchSize));
    output.FromLaunch = entry.Kind == TOutputKind::Launch && sizes.Launch && sizes.Launch->width() > 1;
    output.Recipe = RecipeOf(
        output.FromLaunch ? *sizes.Launch : sizes.Icon, output.Box, entry.Kind == TOutputKind::AppStore);
    output.Path = WithTrailingDelimiter(job.OutputFolder) + ImageFileName(output.ID);
    return output;
}

bool HaveSameContent(const TOutput& a, const TOutput& b)
{
    const bool isIcon = a.Kind == TOutputKind::MainIcon || b.Kind == TOutputKind::MainIcon;
    return !isIcon && a.FromLaunch == b.FromLaunch && a.Recipe == b.Recipe;
}

} // namespace

TGenRec TOutput::Record() const
{
    if (Kind == TOutputKind::MainIcon)
        return { 0, 0, ID };
    return { Box.width(), Box.height(), ID };
}

std::vector<TOutput> OutputsOf(const TGenJob& job, const TSourceSizes& sizes)
{
    std::vector<TOutput> outputs;
    for (const TCatalogueEntry& entry : CatalogueOf(job.Platforms)) {
        TOutput output = OutputOf(entry, job, sizes);
        const auto first = std::find_if(outputs.begin(), outputs.end(),
            [&output](const TOutput& other) { return HaveSameContent(output, other); });
        output.SameAs = static_cast<std::size_t>(first - outputs.begin());
        outputs.push_back(std::move(output));
    }
    return outputs;
}

void RefuseHuge(const TOutput& output, const TSourceSizes& sizes)
{
    // A launch source of extreme shape gives boxes that are too large for the memory.
    const QSize canvas = output.Recipe.Canvas;
    const qint64 mebibytes = MebibytesOf(canvas, PixelChannels);
    if (mebibytes <= MaxDecodedMebibytes)
        return;
    QString reason =
        u"it would have %1 pixels, which take %2 MiB, and the limit is %3 MiB"_s.arg(SizeText(canvas))
            .arg(mebibytes)
            .arg(MaxDecodedMebibytes);
    if (sizes.Launch)
        reason += u"; its height follows from its width and the shape of the launch image, %1 pixels"_s.arg(
            SizeText(*sizes.Launch));
    throw TError(TErrorKind::BadInput, u"render"_s, output.ID, reason);
}

void RefuseOverwritingSources(const TGenJob& job, const std::vector<TOutput>& outputs)
{
    const auto refuse = [&outputs](const QString& source, const QString& name) {
        for (const TOutput& output : outputs)
            if (!source.isEmpty() && IsSameFile(source, output.Path))
                throw TError(TErrorKind::BadInput, u"generate"_s, output.Path,
                    u"this would overwrite the %1 %2"_s.arg(name, source));
    };
    refuse(job.IconFile, u"icon image"_s);
    refuse(job.LaunchFile, u"launch image"_s);
}

bool CopiesPixels(const TOutput& output, QSize source, TResampleFilter filter)
{
    if (output.Kind != TOutputKind::MainIcon)
        return !TRenderSource::IsFiltered(source, output.Recipe.Fitted, filter);
    return std::any_of(IconSizes.begin(), IconSizes.end(), [&](int side) {
        return !TRenderSource::IsFiltered(source, FittedSize(source, { side, side }), filter);
    });
}

QByteArray RenderOutput(const TOutput& output, const TRenderSources& sources, const TRenderOptions& options)
{
    if (output.Kind == TOutputKind::MainIcon)
        return RenderMainIcon(*sources.Icon, options.Filter);
    return RenderPng(output.FromLaunch ? *sources.Launch : *sources.Icon, output.Recipe, options);
}

} // namespace Corvadine
