#include "app/SourceIntake.h"

#include "app/MainState.h"
#include "base/Files.h"
#include "base/PathRules.h"
#include "dialogs/Prompts.h"
#include "images/ImageView.h"
#include "images/ThumbnailView.h"
#include "store/ProjectsTable.h"

#include <utility>

namespace Corvadine {

TSourceIntake::TSourceIntake(TParts parts) : FParts(std::move(parts)) { }

void TSourceIntake::ChooseIcon()
{
    Choose(TField::IconImageName, FParts.Icon);
}

void TSourceIntake::ChooseSplash()
{
    Choose(TField::SplashImageName, FParts.Splash);
}

void TSourceIntake::TakeIcon(const QString& file)
{
    Take(TField::IconImageName, FParts.Icon, file);
}

void TSourceIntake::TakeSplash(const QString& file)
{
    Take(TField::SplashImageName, FParts.Splash, file);
}

void TSourceIntake::RemoveIcon()
{
    Remove(TField::IconImageName, FParts.Icon);
}

void TSourceIntake::RemoveSplash()
{
    Remove(TField::SplashImageName, FParts.Splash);
}

void TSourceIntake::Choose(TField field, TImageView& view)
{
    const TProject project = FParts.Table.Current();
    const QString folder = FolderOf(FieldValue(project, field).toString());
    const QString start = FolderExists(folder) ? folder : FolderOf(project.ProjectFile);
    if (const auto file = FParts.Prompts.ChooseImage(start))
        Take(field, view, *file);
}

void TSourceIntake::Take(TField field, TImageView& view, const QString& file)
{
    FParts.Table.Edit(); // first: without a project it begins one, which clears the views
    view.Load(file, TDecoderChoice::ByExtension);
    FParts.Table.SetField(field, file);
}

void TSourceIntake::Remove(TField field, TImageView& view)
{
    FParts.Table.SetField(field, QString());
    view.Clear();
}

void TSourceIntake::ShowCurrentProject()
{
    const TProject project = FParts.Table.Current();
    FParts.Icon.Clear();
    FParts.Splash.Clear();
    if (FileExists(project.IconImageName))
        FParts.Icon.Load(project.IconImageName, TDecoderChoice::ByContent);
    if (FileExists(project.SplashImageName))
        FParts.Splash.Load(project.SplashImageName, TDecoderChoice::ByContent);
    ShowOutputs(project.OutputFolder);
}

// A folder that is shown already, or that is missing, leaves thumbnails and FilesGenerated as they are, even
// if a project without a folder has cleared the thumbnails in between.
void TSourceIntake::ShowOutputs(const QString& folder)
{
    TMainState& state = FParts.State;
    if (folder.isEmpty()) {
        FParts.ThumbnailsReplaced();
        FParts.MView.Clear();
        state.FilesGenerated = false;
    } else if (folder != state.LastOutputFolder && FolderExists(folder)) {
        state.LastOutputFolder = folder;
        FParts.ThumbnailsReplaced();
        const bool hasImages = FParts.MView.Fill(folder);
        state.FilesGenerated = false;
        if (hasImages) {
            FParts.BuildGenList(); // may fail; the list of another project must not count as this one's
            state.FilesGenerated = true;
            FParts.MView.SelectFirst();
        }
    }
}

} // namespace Corvadine
