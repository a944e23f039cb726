#include "generate/OutputPlan.h"

#include "base/Literals.h"
#include "images/SourceImage.h"

#include <algorithm>

namespace Corvadine {

namespace {

// Returns a warning about the output that enlarges a source most, or nothing if no output enlarges the
// source. `launch` is true for the launch source and false for the icon source. `source` is the size of the
// source in pixels.
QStringList EnlargementWarnings(const std::vector<TOutput>& outputs, bool launch, QSize source)
{
    const auto width = [launch](const TOutput& output) {
        return output.FromLaunch == launch ? output.Recipe.Fitted.width() : 0;
    };
    const auto largest = std::max_element(outputs.begin(), outputs.end(),
        [&width](const TOutput& a, const TOutput& b) { return width(a) < width(b); });
    if (largest == outputs.end() || width(*largest) <= source.width())
        return {};
    const double factor = static_cast<double>(width(*largest)) / source.width();
    return { u"The %1 has %2 pixels; %3 enlarges it %4 times, to %5"_s.arg(
        launch ? u"launch image"_s : u"icon image"_s, SizeText(source), largest->ID,
        QString::number(factor, 'f', 2), SizeText(largest->Recipe.Fitted)) };
}

} // namespace

TOutputPlan PlanOutputs(const TGenJob& job)
{
    const TRenderSources sources = LoadSources(job);
    const TSourceSizes sizes = sources.Sizes();
    TOutputPlan plan { OutputsOf(job, sizes), JobWarnings(job) };
    for (const TOutput& output : plan.Outputs)
        RefuseHuge(output, sizes);
    RefuseOverwritingSources(job, plan.Outputs);
    if (plan.Outputs.empty())
        return plan;
    if (!job.IconFile.isEmpty()) {
        if (sizes.Icon.width() != sizes.Icon.height())
            plan.Warnings.append(
                u"The icon image has %1 pixels; it is not square, and so its outputs are not either"_s.arg(
                    SizeText(sizes.Icon)));
        plan.Warnings += EnlargementWarnings(plan.Outputs, false, sizes.Icon);
    }
    if (sources.Launch) {
        plan.Warnings += EnlargementWarnings(plan.Outputs, true, *sizes.Launch);
        if (IsTransparent(sources.Launch->Image()))
            plan.Warnings.append(
                u"The launch image is transparent; the background color will show through"_s);
    }
    return plan;
}

} // namespace Corvadine
