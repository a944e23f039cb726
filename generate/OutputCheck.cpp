#include "generate/OutputCheck.h"

#include "base/Error.h"
#include "base/Files.h"
#include "generate/Outputs.h"
#include "generate/pixels/Resampler.h"
#include "images/SourceImage.h"

#include <QFile>
#include <QImageReader>

namespace Corvadine {

namespace {

// The color type that the PNG of an output must have (https://www.w3.org/TR/png-3/#11IHDR).
int ExpectedColorType(bool keepsAlpha, TOutputFormat format)
{
    constexpr int Rgb = 2;
    constexpr int Palette = 3;
    constexpr int RgbAlpha = 6;
    if (format == TOutputFormat::Colors256)
        return Palette;
    return keepsAlpha ? RgbAlpha : Rgb;
}

// Returns what is wrong with the PNG of `output`, or an empty text if nothing is wrong. Throws TError if the
// file cannot be decoded.
QString PngFault(const TOutput& output, const TRenderSource& source, TOutputFormat format)
{
    QFile file(output.Path);
    const QImage image = LoadSourceImage(file, TDecoderChoice::ByContent);
    // These bytes hold the signature, and the first chunk (IHDR) up to bit depth and color type.
    constexpr qint64 HeaderBytes = 26;
    file.seek(0);
    const QByteArray header = file.read(HeaderBytes);
    if (header.size() < HeaderBytes || !header.startsWith("\x89PNG\r\n\x1A\n"))
        return u"it is not a PNG file"_s;
    const QSize size = output.Recipe.Canvas;
    if (image.size() != size)
        return u"it has %1 pixels instead of %2"_s.arg(SizeText(image.size()), SizeText(size));
    constexpr int BitDepth = 8;
    const bool keepsAlpha = output.Recipe.KeepsAlpha && source.Image().hasAlphaChannel();
    const int colorType = ExpectedColorType(keepsAlpha, format);
    if (header[24] != BitDepth || header[25] != colorType)
        return u"it has color type %1 with %2 bits instead of color type %3 with %4 bits"_s
            .arg(int { header[25] })
            .arg(int { header[24] })
            .arg(colorType)
            .arg(BitDepth);
    if (!keepsAlpha && IsTransparent(image))
        return u"it is transparent"_s;
    return {};
}

// Returns what is wrong with the Windows icon at `path`, or an empty text if nothing is wrong. `source` is
// the size of the icon source in pixels.
QString IconFault(const QString& path, QSize source)
{
    QImageReader reader(path, "ico");
    const auto count = static_cast<std::size_t>(std::max(reader.imageCount(), 0));
    if (count != IconSizes.size())
        return u"it holds %1 images instead of %2"_s.arg(count).arg(IconSizes.size());
    for (std::size_t i = 0; i < count; ++i) {
        const QSize expected = FittedSize(source, { IconSizes[i], IconSizes[i] });
        reader.jumpToImage(static_cast<int>(i));
        const QImage image = reader.read();
        if (image.isNull())
            return u"its image of %1 pixels is damaged"_s.arg(SizeText(expected));
        if (image.size() != expected)
            return u"its image %1 has %2 pixels instead of %3"_s.arg(i + 1).arg(
                SizeText(image.size()), SizeText(expected));
    }
    return {};
}

QString FaultOf(const TOutput& output, const TRenderSources& sources, TOutputFormat format)
{
    if (!FileExists(output.Path))
        return u"the file does not exist"_s;
    if (output.Kind == TOutputKind::MainIcon)
        return IconFault(output.Path, sources.Icon->Image().size());
    try {
        RefuseHuge(output, sources.Sizes());
        return PngFault(output, output.FromLaunch ? *sources.Launch : *sources.Icon, format);
    } catch (const TError& error) {
        return error.Reason();
    }
}

} // namespace

std::vector<TOutputFinding> CheckOutputs(const TGenJob& job)
{
    const TRenderSources sources = LoadSources(job);
    std::vector<TOutputFinding> findings;
    for (const TOutput& output : OutputsOf(job, sources.Sizes())) {
        const QString fault = FaultOf(output, sources, job.Options.Format);
        if (!fault.isEmpty())
            findings.push_back({ output.ID, output.Path, fault });
    }
    return findings;
}

} // namespace Corvadine
