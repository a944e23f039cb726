#pragma once

#include "generate/Catalogue.h"

#include <QString>

#include <vector>

namespace Corvadine {

class THelpRouter;

// What the window's commands share beside the table and the controls.
struct TMainState {
    QString ProgramFolder;        // with a trailing delimiter; all of the program's own files lie in it
    QString MyIniFileName;        // the settings file in use
    QString BackupFolder;         // with a trailing delimiter
    QString LastOutputFolder;     // the folder that the thumbnails were last filled from
    bool FilesGenerated = false;  // the thumbnails are of the current project's folder or of the last run
    std::vector<TGenRec> GenList; // as last built; not changed by ticking a platform
    bool Running = false;         // a generation run is under way
    THelpRouter* HelpRouter = nullptr; // the window's child; null until the start-up comes to it

    // Full path of one of the program's own files.
    QString OwnFile(const char* name) const { return ProgramFolder + QString::fromUtf8(name); }
};

} // namespace Corvadine
