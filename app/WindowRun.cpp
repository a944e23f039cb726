#include "app/WindowRun.h"

#include "app/MainState.h"
#include "app/WaitCursor.h"
#include "base/Error.h"
#include "base/Files.h"
#include "dialogs/Prompts.h"
#include "images/ThumbnailView.h"

#include <QApplication>
#include <QProgressBar>
#include <QScopeGuard>

#include <algorithm>
#include <utility>

namespace Corvadine {

namespace {

bool EnsureFolder(const QString& folder)
{
    try {
        CreateFolder(folder);
    } catch (const TError&) {
        return false; // the caller's own message says it
    }
    return FolderExists(folder);
}

} // namespace

TWindowRun::TWindowRun(TParts parts) : FParts(std::move(parts)) { }

void TWindowRun::Execute()
{
    if (!EnsureFolder(FParts.OutputFolder())) {
        FParts.Prompts.ShowError(QStringLiteral("The Output Folder does not exist!"));
        return;
    }
    FStopped = false;
    FLeft = false;
    FParts.State.Running = true;
    ShowWaitCursor();
    FParts.Ribbon.setEnabled(false);
    const auto restore = qScopeGuard([this] {
        ShowNormalCursor();
        FParts.Ribbon.setEnabled(true);
        FParts.State.Running = false;
    });
    GenerateAll();
}

void TWindowRun::GenerateAll()
{
    FParts.MView.Clear();
    // Taken before anything is processed: from here on the user may choose another project.
    TOutputRenderer renderer = FParts.TakeJob();
    FParts.BuildGenList();
    const std::vector<TGenRec> list = FParts.State.GenList;
    QApplication::processEvents();
    if (!FLeft)
        FParts.MView.Clear();
    FParts.PB.setRange(0, std::max(static_cast<int>(list.size()), 1)); // an empty range would mean "busy"
    FParts.PB.setValue(0);
    for (const TGenRec& record : list) {
        GenerateImage(renderer, record);
        FParts.PB.setValue(FParts.PB.value() + 1);
        FParts.PB.repaint();
        QApplication::processEvents();
        if (FStopped)
            return;
    }
    if (renderer.Settings().Platforms.Windows)
        GenerateMainIcon(renderer);
    if (FLeft)
        ShowAfterReturn(renderer.Settings(), list);
    else
        FinishView();
}

void TWindowRun::FinishView()
{
    FParts.MView.SelectFirst();
    FParts.State.FilesGenerated = true;
}

// Who looked at another project and came back before the end saw only what there was by then. The generation
// list is the run's again, as it would be had they stayed.
void TWindowRun::ShowAfterReturn(const TGenSettings& settings, const std::vector<TGenRec>& list)
{
    if (FParts.OutputFolder() != settings.OutputFolder)
        return;
    FParts.State.GenList = list;
    if (settings.Platforms.Windows)
        FParts.State.GenList.push_back(MainIconEntry());
    FParts.State.LastOutputFolder = settings.OutputFolder;
    FParts.MView.Fill(settings.OutputFolder);
    FinishView();
}

void TWindowRun::GenerateImage(TOutputRenderer& renderer, const TGenRec& record)
{
    Write(renderer, record, {});
}

void TWindowRun::GenerateMainIcon(TOutputRenderer& renderer)
{
    Write(renderer, MainIconEntry(), QStringLiteral("Max 512 x 512"));
    if (!FLeft)
        FParts.State.GenList.push_back(MainIconEntry());
}

void TWindowRun::Write(TOutputRenderer& renderer, const TGenRec& record, const QString& info)
{
    const QString path = OutputPath(renderer.Settings(), record);
    WriteFileAtomically(path, renderer.Render(record));
    if (!FLeft)
        FParts.MView.Append(path, info);
}

} // namespace Corvadine
