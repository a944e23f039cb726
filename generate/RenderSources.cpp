#include "generate/RenderSources.h"

#include "images/SourceImage.h"

namespace Corvadine {

TSourceSizes TRenderSources::Sizes() const
{
    TSourceSizes sizes { Icon->Image().size(), {} };
    if (Launch)
        sizes.Launch = Launch->Image().size();
    return sizes;
}

TSourceSizes ReadSourceSizes(const QString& iconFile, const QString& launchFile)
{
    TSourceSizes sizes;
    if (!iconFile.isEmpty())
        sizes.Icon = ReadImageHeader(iconFile, TDecoderChoice::ByContent).Size;
    if (!launchFile.isEmpty())
        sizes.Launch = ReadImageHeader(launchFile, TDecoderChoice::ByContent).Size;
    return sizes;
}

std::shared_ptr<const TRenderSource> LoadSource(const QString& file)
{
    return std::make_shared<TRenderSource>(
        file.isEmpty() ? BlankSourceImage() : LoadSourceImage(file, TDecoderChoice::ByContent));
}

TRenderSources LoadSources(const TGenJob& job)
{
    return { LoadSource(job.IconFile), job.LaunchFile.isEmpty() ? nullptr : LoadSource(job.LaunchFile) };
}

} // namespace Corvadine
