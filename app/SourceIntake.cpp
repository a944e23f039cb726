#include "app/SourceIntake.h"

#include "app/MainState.h"
#include "base/Files.h"
#include "base/PathRules.h"
#include "dialogs/Prompts.h"
#include "images/SourceImage.h"
#include "store/ProjectsTable.h"
#include "widgets/ImageView.h"
#include "widgets/ThumbnailView.h"

namespace Corvadine {

TSourceIntake::TSourceIntake(TMainState& state)
    : Icon { TField::IconImageName, *state.Controls.ImageEnViewIcon }
    , Splash { TField::SplashImageName, *state.Controls.ImageEnViewSplash }
    , FState(state)
{
}

void TSourceIntake::Choose(const TSource& source)
{
    const TProject project = FState.Table.Current();
    const QString folder = FolderOf(FieldValue(project, source.Field).toString());
    const QString start = FolderExists(folder) ? folder : FolderOf(project.ProjectFile);
    if (const auto file = FState.Prompts.ChooseImage(start))
        Take(source, *file);
}

void TSourceIntake::Take(const TSource& source, const QString& file)
{
    FState.Table.Edit(); // first, because Edit() may append a row, and a new row clears the views
    source.View.Load(file);
    FState.Table.SetField(source.Field, file);
}

void TSourceIntake::TakeDropped(const TSource& source, const QString& file)
{
    ReadImageHeader(file);
    Take(source, file);
}

void TSourceIntake::Remove(const TSource& source)
{
    FState.Table.SetField(source.Field, QString());
    source.View.Clear();
}

void TSourceIntake::ShowCurrentProject()
{
    const TProject project = FState.Table.Current();
    for (const TSource& source : { Icon, Splash }) {
        source.View.Clear();
        const QString file = FieldValue(project, source.Field).toString();
        if (FileExists(file))
            source.View.Load(file);
    }
    ShowOutputs(project.OutputFolder);
}

// Shows the images in `folder`. An empty path clears the thumbnails. Nothing changes if `folder` is missing.
// Nothing changes if `folder` is LastOutputFolder, even if the thumbnails were cleared in the meantime.
void TSourceIntake::ShowOutputs(const QString& folder)
{
    TThumbnailView& thumbnails = *FState.Controls.MView;
    if (folder.isEmpty()) {
        FState.RunIsShown = false;
        thumbnails.Clear();
        FState.FilesGenerated = false;
    } else if (folder != FState.LastOutputFolder && FolderExists(folder)) {
        FState.LastOutputFolder = folder;
        FState.RunIsShown = false;
        const bool hasImages = thumbnails.Fill(folder);
        FState.FilesGenerated = hasImages;
        if (hasImages) {
            FState.BuildGenList();
            thumbnails.SelectFirst();
        }
    }
}

} // namespace Corvadine
