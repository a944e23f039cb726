#include "app/WindowSettings.h"

#include "app/MainState.h"
#include "app/OlderSettings.h"
#include "app/ProjectLookup.h"
#include "app/SettingsFile.h"
#include "app/WindowPlacement.h"
#include "base/Files.h"
#include "store/ProjectsTable.h"

#include <QFile>

namespace Corvadine {

TWindowSettings::TWindowSettings(TParts parts) : FParts(parts) { }

void TWindowSettings::Read()
{
    const QString older = FParts.State.OwnFile("Corvadine.ini");
    FParts.State.MyIniFileName = FParts.State.OwnFile("CorvadineBase.ini");
    if (FileExists(older)) {
        ImportOlder(TSettingsFile(older));
        QFile::remove(older);
        Save(); // so that the new file is there from now on
        return;
    }
    const TSettingsFile settings(FParts.State.MyIniFileName);
    if (settings.HasSection()) {
        FRememberedProject = settings.Text("ProjectFile");
        Place(FParts.Window, ReadPlacement(settings));
    }
}

// A row that cannot be saved stays as it is, and so does the older file: the next start tries again.
void TWindowSettings::ImportOlder(const TSettingsFile& settings)
{
    if (!settings.HasSection())
        return;
    AppendOlderProject(FParts.Table, settings);
    FRememberedProject = FParts.Table.Current().ProjectFile;
    Place(FParts.Window, ReadPlacement(settings));
    FParts.Table.Post();
}

void TWindowSettings::ReopenProject()
{
    if (!FileExists(FRememberedProject))
        return;
    if (const auto id = FParts.Table.LookupByProjectFile(FRememberedProject))
        FParts.Lookup.SetValue(*id);
}

void TWindowSettings::Save() const
{
    if (FParts.State.MyIniFileName.isEmpty())
        return; // the start-up has failed before it came to them
    TSettingsFile settings(FParts.State.MyIniFileName);
    settings.SetText("ProjectFile", FParts.Table.Current().ProjectFile);
    WritePlacement(settings, PlacementOf(FParts.Window));
    settings.Save();
}

} // namespace Corvadine
