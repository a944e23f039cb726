#include "app/WindowSettings.h"

#include "app/MainState.h"
#include "app/OlderSettings.h"
#include "app/ProjectLookup.h"
#include "app/SettingsFile.h"
#include "app/WindowPlacement.h"
#include "base/Error.h"
#include "base/Files.h"
#include "store/ProjectsTable.h"

#include <QFile>

namespace Corvadine {

void TWindowSettings::Read()
{
    const QString older = FState.OwnFile("Corvadine.ini");
    FState.MyIniFileName = FState.OwnFile("CorvadineBase.ini");
    if (FileExists(older)) {
        const TSettingsFile settings(older);
        try {
            ImportOlder(settings);
        } catch (const TError& error) {
            throw TError(error.Kind(), u"import the project of the older release from"_s, older,
                u"%1. Each start tries again, until that file is renamed or deleted"_s.arg(error.Text()));
        }
        QFile::remove(older);
        Save(); // otherwise a crash would lose the settings
        return;
    }
    const TSettingsFile settings(FState.MyIniFileName);
    if (settings.HasSection()) {
        FRememberedProject = settings.Text("ProjectFile");
        Place(FWindow, ReadPlacement(settings));
    }
}

// If the row cannot be saved, the older file stays and the next start tries again.
void TWindowSettings::ImportOlder(const TSettingsFile& settings)
{
    if (!settings.HasSection())
        return;
    AppendOlderProject(FState.Table, settings);
    FRememberedProject = FState.Table.Current().ProjectFile;
    Place(FWindow, ReadPlacement(settings));
    FState.Table.Post();
}

void TWindowSettings::ReopenProject()
{
    if (!FileExists(FRememberedProject))
        return;
    if (const auto id = FState.Table.LookupByProjectFile(FRememberedProject))
        FState.Controls.cbProjects->SetValue(*id);
}

void TWindowSettings::Save() const
{
    if (FState.MyIniFileName.isEmpty())
        return; // the start-up failed before Read()
    TSettingsFile settings(FState.MyIniFileName);
    settings.SetText("ProjectFile", FState.Table.Current().ProjectFile);
    WritePlacement(settings, PlacementOf(FWindow));
    settings.Save();
}

} // namespace Corvadine
