#include "generate/OutputPlan.h"

#include "generate/GenerationRun.h"
#include "images/SourceImage.h"

#include <algorithm>

namespace Corvadine {

namespace {

// How a user speaks of the two sources.
QString SourceName(bool launch)
{
    return launch ? QStringLiteral("launch image") : QStringLiteral("icon image");
}

// The output that enlarges one of the sources most, if any does.
struct TEnlargement {
    double Factor = 1;
    QString ID;
    QSize Fitted;
};

class TPlanner {
public:
    explicit TPlanner(const TGenJob& job)
        : FJob(job), FSources(LoadSources(job)), FIcon(FSources.Icon->Info())
    {
        if (FSources.Launch)
            FLaunch = FSources.Launch->Info();
    }

    TOutputPlan Plan()
    {
        for (const TGenRec& record : PlanGenList(FJob.Settings, FLaunch))
            AddOutput(record);
        FPlan.Warnings = JobWarnings(FJob);
        if (!FPlan.Outputs.empty())
            WarnOfSources();
        return FPlan;
    }

private:
    void AddOutput(const TGenRec& record)
    {
        // The Windows icon's largest image stands for all ten.
        const bool isIcon = record.ID == MainIconID;
        const TGenRec shape { isIcon ? IconSizes.back() : record.Width,
            isIcon ? IconSizes.back() : record.Height, record.ID };
        const TRecipe recipe = RecipeOf(shape, FIcon, FLaunch);
        FPlan.Outputs.push_back({ record, recipe.Canvas, recipe.FromLaunch,
            recipe.FromLaunch ? FJob.LaunchFile : FJob.IconFile, OutputPath(FJob.Settings, record) });
        const QSize source = recipe.FromLaunch ? FLaunch->Size : FIcon.Size;
        const double factor = static_cast<double>(recipe.Fitted.width()) / source.width();
        TEnlargement& most = recipe.FromLaunch ? FMostLaunch : FMostIcon;
        if (factor > most.Factor)
            most = { factor, record.ID, recipe.Fitted };
    }

    void WarnOfSources()
    {
        if (!FJob.IconFile.isEmpty()) {
            if (FIcon.Size.width() != FIcon.Size.height())
                FPlan.Warnings.append(QStringLiteral(
                    "The icon image has %1 pixels; it is not square, and so its outputs are not either")
                                          .arg(SizeText(FIcon.Size)));
            WarnOfEnlargement(false, FIcon.Size, FMostIcon);
        }
        if (!FSources.Launch)
            return;
        WarnOfEnlargement(true, FLaunch->Size, FMostLaunch);
        if (FSources.Launch->IsTransparent())
            FPlan.Warnings.append(
                QStringLiteral("The launch image is transparent; the background colour will show through"));
    }

    void WarnOfEnlargement(bool launch, QSize size, const TEnlargement& most)
    {
        if (most.Factor > 1)
            FPlan.Warnings.append(QStringLiteral("The %1 has %2 pixels; %3 enlarges it %4 times, to %5")
                                      .arg(SourceName(launch), SizeText(size), most.ID,
                                          QString::number(most.Factor, 'f', 2), SizeText(most.Fitted)));
    }

    const TGenJob& FJob;
    TRenderSources FSources;
    TSourceInfo FIcon;
    std::optional<TSourceInfo> FLaunch;
    TEnlargement FMostIcon;
    TEnlargement FMostLaunch;
    TOutputPlan FPlan;
};

} // namespace

TOutputPlan PlanOutputs(const TGenJob& job)
{
    return TPlanner(job).Plan();
}

} // namespace Corvadine
