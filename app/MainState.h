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
    QString LastOutputFolder {};       // the folder that filled the thumbnails last
    bool FilesGenerated = false;       // the folder shown last has images, or a run has ended since
    std::vector<TGenRec> GenList {};   // images of the shown folder or run; platform ticks do not change it
    bool Running = false;              // a generation run is under way
    bool RunIsShown = false;           // false once another folder is shown; the run then adds no thumbnails
    THelpRouter* HelpRouter = nullptr; // a child of the window; null before SetUpHelp()

    // Returns the full path of the program's own file `name`.
    QString OwnFile(const char* name) const { return ProgramFolder + QString::fromUtf8(name); }

    // Returns the current project with the options that the editors show, even if an option is not written to
    // the row yet. For example, a previewed color or the position of a moved slider may not be written yet.
    TProject ProjectAsShown() const;

    // Rebuilds GenList for ProjectAsShown() and the image in the launch view. If "2x Width" has no value, the
    // list has the sizes of a new project. A run refuses a project without "2x Width". But the window can
    // still show the project's images and write them into the project file.
    void BuildGenList();

    // Returns a renderer with the settings of ProjectAsShown() and the images of the views. Throws TError
    // as JobOf() and RefuseOverwritingSources() do.
    TOutputRenderer TakeJob() const;
};

} // namespace Corvadine
