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
    project.TwoxSize = Controls.cb2xWidth->Value();
    return project;
}

void TMainState::BuildGenList()
{
    const TProject project = ProjectAsShown();
    GenList.clear();
    GenList = Corvadine::BuildGenList(
        PlatformsOf(project), TwoxSizeOf(project), Controls.ImageEnViewSplash->Image().size());
}

TOutputRenderer TMainState::TakeJob() const
{
    TRenderSources sources { std::make_shared<TRenderSource>(Controls.ImageEnViewIcon->Image()), nullptr };
    if (!Controls.ImageEnViewSplash->IsEmpty())
        sources.Launch = std::make_shared<TRenderSource>(Controls.ImageEnViewSplash->Image());
    return { std::move(sources), JobOf(ProjectAsShown()) };
}

} // namespace Corvadine
