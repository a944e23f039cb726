#include "generate/GenJob.h"

#include "base/Error.h"
#include "store/Project.h"

#include <optional>

namespace Corvadine {

namespace {

TError Unusable(const TProject& project, const QString& reason)
{
    return { TErrorKind::BadInput, QStringLiteral("use the settings of"), project.ProjectFile, reason };
}

// Databases of older releases may hold no value; the user sees an empty editor then and has to choose one.
int Require(const TProject& project, std::optional<int> value, const char* caption)
{
    if (!value)
        throw Unusable(project, QStringLiteral("the option \"%1\" has no value").arg(QLatin1String(caption)));
    return *value;
}

TResampleFilter RequireFilter(const TProject& project)
{
    const int code = Require(project, project.ResampleFilter, "Sampling Filter");
    const auto filter = FilterOfCode(code);
    if (!filter)
        throw Unusable(
            project, QStringLiteral("the option \"Sampling Filter\" has the unknown value %1").arg(code));
    return *filter;
}

} // namespace

TPlatforms PlatformsOf(const TProject& project)
{
    return { project.IncAndroid, project.IncIPhone, project.IncIPad, project.IncWindows };
}

int TwoxSizeOf(const TProject& project)
{
    return Require(project, project.TwoxSize, "2x Width");
}

TGenJob JobOf(const TProject& project)
{
    TGenJob job;
    TGenSettings& settings = job.Settings;
    settings.Platforms = PlatformsOf(project);
    settings.TwoxSize = TwoxSizeOf(project);
    settings.Background = TColor::FromStored(Require(project, project.PickColor, "Background"));
    settings.Format =
        Require(project, project.PixelFormat, "Output Format") == static_cast<int>(TOutputFormat::Colors256)
        ? TOutputFormat::Colors256
        : TOutputFormat::TrueColor;
    settings.Compression = Require(project, project.Compression, "Compression");
    settings.Filter = RequireFilter(project);
    settings.OutputFolder = project.OutputFolder;
    job.IconFile = project.IconImageName;
    job.LaunchFile = project.SplashImageName;
    return job;
}

QStringList JobWarnings(const TGenJob& job)
{
    if (job.Settings.Platforms == TPlatforms {})
        return { QStringLiteral("No platform is ticked, so there is nothing to generate") };
    if (job.IconFile.isEmpty())
        return { QStringLiteral("No icon image is chosen; its outputs will be plain white") };
    return {};
}

} // namespace Corvadine
