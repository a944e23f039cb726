#pragma once

#include "app/MainControls.h"
#include "generate/Catalogue.h"
#include "generate/OutputRenderer.h"

#include <QString>

#include <vector>

namespace Corvadine {

class THelpRouter;
class TProjectsTable;
class TPrompts;
struct TProject;

// What the parts of the main window share: the table, the controls, and the state that the commands change.
struct TMainState {
    TProjectsTable& Table;
    const TMainControls& Controls;
    TPrompts& Prompts;

    QString ProgramFolder {};          // with a trailing delimiter; all of the program's own files lie in it
    QString MyIniFileName {};          // the settings file; empty before TWindowSettings::Read()
    QString BackupFolder {};           // with a trailing delimiter
    QString LastOutputFolder {};       // the last folder whose images filled the thumbnails
    bool FilesGenerated = false;       // the thumbnails show the current project's folder or the last run
    std::vector<TGenRec> GenList {};   // built when a folder or run is shown; ticking a platform keeps it
    bool Running = false;              // a generation run is under way
    bool RunIsShown = false;           // the run adds its thumbnails; false once another folder is shown
    THelpRouter* HelpRouter = nullptr; // a child of the window; null before SetUpHelp()

    // Full path of one of the program's own files.
    QString OwnFile(const char* name) const { return ProgramFolder + QString::fromUtf8(name); }

    // The current project with the options as the editors show them, even if they are not written yet: a
    // previewed color, or a moved slider that still has the focus.
    TProject ProjectAsShown() const;

    // Rebuilds GenList for ProjectAsShown() and the image in the launch view. If "2x Width" has no value,
    // empties GenList and throws TError(BadInput).
    void BuildGenList();

    // Returns a renderer with the settings of ProjectAsShown() and the images of the views. Throws TError
    // as JobOf() does.
    TOutputRenderer TakeJob() const;
};

} // namespace Corvadine
