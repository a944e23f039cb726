#include "generate/OutputRenderer.h"

#include <algorithm>
#include <utility>

namespace Corvadine {

TOutputRenderer::TOutputRenderer(TRenderSources sources, TGenSettings settings)
    : FSources(std::move(sources)), FSettings(std::move(settings))
{
}

QByteArray TOutputRenderer::Render(const TGenRec& record)
{
    if (record.ID == MainIconID)
        return RenderMainIcon(*FSources.Icon, FSettings.Filter);
    const auto launch = FSources.Launch ? std::optional(FSources.Launch->Info()) : std::nullopt;
    const TRecipe recipe = RecipeOf(record, FSources.Icon->Info(), launch);
    const auto equal = std::find_if(FRendered.begin(), FRendered.end(),
        [&recipe](const TRendered& rendered) { return rendered.Recipe == recipe; });
    if (equal != FRendered.end())
        return equal->File;
    FRendered.push_back({ recipe, RenderPng(FSources, FSettings, recipe) });
    return FRendered.back().File;
}

} // namespace Corvadine
