#include "generate/GenJob.h"

#include "base/Error.h"
#include "store/Project.h"

#include <optional>

namespace Corvadine {

namespace {

// Databases of older releases may hold no value; the user sees an empty editor then and has to choose one.
int Require(std::optional<int> value, const char* caption)
{
    if (!value)
        throw TError(TErrorKind::BadInput,
            QStringLiteral("Cannot generate: the option \"%1\" has no value").arg(QLatin1String(caption)));
    return *value;
}

} // namespace

TGenJob JobOf(const TProject& project)
{
    TGenJob job;
    TGenSettings& settings = job.Settings;
    settings.Platforms = { project.IncAndroid, project.IncIPhone, project.IncIPad, project.IncWindows };
    settings.TwoxSize = Require(project.TwoxSize, "2x Width");
    settings.Background = TColor::FromStored(Require(project.PickColor, "Background"));
    settings.Format =
        Require(project.PixelFormat, "Output Format") == static_cast<int>(TOutputFormat::Colors256)
        ? TOutputFormat::Colors256
        : TOutputFormat::TrueColor;
    settings.Compression = Require(project.Compression, "Compression");
    settings.Filter = FilterOfCode(Require(project.ResampleFilter, "Sampling Filter"));
    settings.OutputFolder = project.OutputFolder;
    job.IconFile = project.IconImageName;
    job.LaunchFile = project.SplashImageName;
    return job;
}

} // namespace Corvadine
