#include "app/MainState.h"

#include "app/ColorBox.h"
#include "app/FieldEditors.h"
#include "generate/GenJob.h"
#include "store/ProjectsTable.h"
#include "widgets/ImageView.h"

#include <memory>
#include <utility>

namespace Corvadine {

TProject TMainState::ProjectAsShown() const
{
    TProject project = Table.Current();
    if (Controls.cbBackground->HasValue())
        project.PickColor = Controls.cbBackground->Value();
    project.Compression = Controls.cbCompression->Value();
    if (const auto width =
            Controls.cb2xWidth->Value()) // while the box is blank, the field has its saved value
        project.TwoxSize = width;
    return project;
}

void TMainState::BuildGenList()
{
    const TProject project = ProjectAsShown();
    GenList = Corvadine::BuildGenList(PlatformsOf(project), project.TwoxSize.value_or(TGenJob().TwoxSize),
        Controls.ImageEnViewSplash->Image().size());
}

TOutputRenderer TMainState::TakeJob() const
{
    TRenderSources sources { std::make_shared<TRenderSource>(Controls.ImageEnViewIcon->Image()), nullptr };
    if (!Controls.ImageEnViewSplash->IsEmpty())
        sources.Launch = std::make_shared<TRenderSource>(Controls.ImageEnViewSplash->Image());
    return { std::move(sources), JobOf(ProjectAsShown()) };
}

} // namespace Corvadine
