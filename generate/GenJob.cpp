#include "generate/GenJob.h"

#include "base/Error.h"
#include "store/Project.h"

#include <optional>

namespace Corvadine {

namespace {

TError Unusable(const TProject& project, const QString& reason)
{
    return { TErrorKind::BadInput, u"use the settings of"_s, project.ProjectFile, reason };
}

// Databases of older releases may lack an option's value. The window then shows an empty editor, but a run
// needs the value.
int Require(const TProject& project, std::optional<int> value, const char* caption)
{
    if (!value)
        throw Unusable(project, u"the option \"%1\" has no value"_s.arg(QLatin1String(caption)));
    return *value;
}

TResampleFilter RequireFilter(const TProject& project)
{
    const int code = Require(project, project.ResampleFilter, "Sampling Filter");
    const auto filter = FilterOfCode(code);
    if (!filter)
        throw Unusable(project, u"the option \"Sampling Filter\" has the unknown value %1"_s.arg(code));
    return *filter;
}

} // namespace

TPlatforms PlatformsOf(const TProject& project)
{
    return { project.IncAndroid, project.IncIPhone, project.IncIPad, project.IncWindows };
}

TGenJob JobOf(const TProject& project)
{
    TGenJob job;
    job.Platforms = PlatformsOf(project);
    job.TwoxSize = Require(project, project.TwoxSize, "2x Width");
    job.Options.Background = TColor::FromStored(Require(project, project.PickColor, "Background"));
    const int format = Require(project, project.PixelFormat, "Output Format");
    job.Options.Format = format == static_cast<int>(TOutputFormat::Colors256) ? TOutputFormat::Colors256
                                                                              : TOutputFormat::TrueColor;
    job.Options.Compression = Require(project, project.Compression, "Compression");
    job.Options.Filter = RequireFilter(project);
    job.OutputFolder = project.OutputFolder;
    job.IconFile = project.IconImageName;
    job.LaunchFile = project.SplashImageName;
    return job;
}

QStringList JobWarnings(const TGenJob& job)
{
    if (job.Platforms == TPlatforms {})
        return { u"No platform is ticked, so there is nothing to generate"_s };
    if (job.IconFile.isEmpty())
        return { u"No icon image is chosen; its outputs will be plain white"_s };
    return {};
}

} // namespace Corvadine
