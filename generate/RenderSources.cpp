#include "generate/RenderSources.h"

#include "images/PngReader.h"
#include "images/SourceImage.h"

#include <QFile>

namespace Corvadine {

namespace {

// Loads a plain PNG file. Returns null for any other file. The rows are inflated into the end of the memory
// of the pixels. Each row is read before pixels overwrite it.
std::shared_ptr<const TRenderSource> LoadPlainPng(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    TPngReader reader(file);
    if (!reader.IsPlain() || reader.Is16Bit()) // a row of 16-bit samples may not fit into a row of pixels
        return nullptr;
    TPixelPairImage pairs(reader.Size());
    const auto format = reader.HasAlpha() ? QImage::Format_ARGB32 : QImage::Format_RGB32;
    const auto setRow = [&pairs, format](int y, const void* pixels) { pairs.SetRow(y, pixels, format); };
    if (!reader.Read(pairs.Bytes(), setRow))
        return nullptr;
    return std::make_shared<TRenderSource>(std::move(pairs), reader.HasAlpha());
}

} // namespace

TSourceSizes TRenderSources::Sizes() const
{
    TSourceSizes sizes { Icon->Size(), {} };
    if (Launch)
        sizes.Launch = Launch->Size();
    return sizes;
}

TSourceSizes ReadSourceSizes(const QString& iconFile, const QString& launchFile)
{
    TSourceSizes sizes;
    if (!iconFile.isEmpty())
        sizes.Icon = ReadImageHeader(iconFile).Size;
    if (!launchFile.isEmpty())
        sizes.Launch = ReadImageHeader(launchFile).Size;
    return sizes;
}

std::shared_ptr<const TRenderSource> LoadSource(const QString& file, TSourceUse use)
{
    if (use == TSourceUse::FilteredOutputs)
        if (auto source = LoadPlainPng(file))
            return source;
    const QImage image = file.isEmpty() ? BlankSourceImage() : LoadSourceImage(file);
    if (use == TSourceUse::Any)
        return std::make_shared<TRenderSource>(image);
    return std::make_shared<TRenderSource>(TPixelPairImage(image), image.hasAlphaChannel());
}

TRenderSources LoadSources(const TGenJob& job)
{
    return { LoadSource(job.IconFile), job.LaunchFile.isEmpty() ? nullptr : LoadSource(job.LaunchFile) };
}

} // namespace Corvadine
