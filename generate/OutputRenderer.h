#pragma once

#include "generate/GenSettings.h"
#include "generate/Rendering.h"

#include <QByteArray>

#include <vector>

namespace Corvadine {

// Renders one run output by output, for a caller that shows each file as it comes. Outputs that are equal are
// rendered once. Settings and sources are taken at construction. Use on one thread.
class TOutputRenderer {
public:
    TOutputRenderer(TRenderSources sources, TGenSettings settings);

    const TGenSettings& Settings() const { return FSettings; }

    // The file of one entry, the Windows icon's included. Throws as RecipeOf does.
    QByteArray Render(const TGenRec& record);

private:
    struct TRendered {
        TRecipe Recipe;
        QByteArray File;
    };

    TRenderSources FSources;
    TGenSettings FSettings;
    std::vector<TRendered> FRendered;
};

} // namespace Corvadine
