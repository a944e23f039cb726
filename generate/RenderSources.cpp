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

TSourceSizes ReadSourceSizes(const TGenJob& job)
{
    TSourceSizes sizes;
    if (!job.IconFile.isEmpty())
        sizes.Icon = ReadImageHeader(job.IconFile, TDecoderChoice::ByContent).Size;
    if (!job.LaunchFile.isEmpty())
        sizes.Launch = ReadImageHeader(job.LaunchFile, TDecoderChoice::ByContent).Size;
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
