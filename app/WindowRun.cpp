#include "app/WindowRun.h"

#include "app/MainState.h"
#include "base/Error.h"
#include "base/Files.h"
#include "dialogs/Prompts.h"
#include "store/ProjectsTable.h"
#include "widgets/Ribbon.h"
#include "widgets/ThumbnailView.h"
#include "widgets/WaitCursor.h"

#include <QApplication>
#include <QProgressBar>
#include <QScopeGuard>

#include <algorithm>

namespace Corvadine {

namespace {

bool EnsureFolder(const QString& folder)
{
    try {
        CreateFolder(folder);
    } catch (const TError&) {
        return false; // the caller shows a message of its own
    }
    return FolderExists(folder);
}

} // namespace

void TWindowRun::Execute()
{
    if (!EnsureFolder(FState.Table.Current().OutputFolder)) {
        FState.Prompts.ShowError(u"The Output Folder does not exist!"_s);
        return;
    }
    FStopped = false;
    FState.RunIsShown = true;
    FState.Running = true;
    ShowWaitCursor();
    FState.Controls.dxRibbon1->setEnabled(false);
    const auto restore = qScopeGuard([this] {
        ShowNormalCursor();
        FState.Controls.dxRibbon1->setEnabled(true);
        FState.Running = false;
    });
    GenerateAll();
}

void TWindowRun::GenerateAll()
{
    TThumbnailView& thumbnails = *FState.Controls.MView;
    QProgressBar& progress = *FState.Controls.PB;
    thumbnails.Clear();
    // The job is taken before the first event is handled, because events let the user choose another project.
    TOutputRenderer renderer = FState.TakeJob();
    FState.BuildGenList();
    const int steps = static_cast<int>(FState.GenList.size()); // without the Windows icon
    QApplication::processEvents();
    if (FState.RunIsShown)
        thumbnails.Clear();
    progress.setRange(0, std::max(steps, 1)); // QProgressBar shows an empty range as "busy"
    progress.setValue(0);
    for (const TOutput& output : renderer.Outputs()) {
        if (output.Kind == TOutputKind::MainIcon) {
            GenerateMainIcon(renderer, output);
            continue;
        }
        GenerateImage(renderer, output);
        progress.setValue(progress.value() + 1);
        progress.repaint();
        QApplication::processEvents();
        if (FStopped)
            return;
    }
    if (FState.RunIsShown)
        FinishView();
    else
        ShowAfterReturn(renderer);
}

void TWindowRun::FinishView()
{
    FState.Controls.MView->SelectFirst();
    FState.FilesGenerated = true;
}

// During a run the user can choose another project and later return to the run's project. Then the thumbnails
// may lack files, and GenList may belong to the other project. This function builds both again.
void TWindowRun::ShowAfterReturn(const TOutputRenderer& renderer)
{
    const QString& folder = renderer.Job().OutputFolder;
    if (FState.Table.Current().OutputFolder != folder)
        return;
    FState.GenList.clear();
    for (const TOutput& output : renderer.Outputs())
        FState.GenList.push_back(output.Record());
    FState.LastOutputFolder = folder;
    FState.Controls.MView->Fill(folder);
    FinishView();
}

void TWindowRun::GenerateImage(TOutputRenderer& renderer, const TOutput& output, const QString& info)
{
    WriteFileAtomically(output.Path, renderer.Render(output));
    if (FState.RunIsShown)
        FState.Controls.MView->Append(output.Path, info);
}

void TWindowRun::GenerateMainIcon(TOutputRenderer& renderer, const TOutput& output)
{
    GenerateImage(renderer, output, u"Max 512 x 512"_s);
    if (FState.RunIsShown)
        FState.GenList.push_back(output.Record());
}

} // namespace Corvadine
