#pragma once

#include <QString>
#include <QStringList>

namespace Corvadine {

struct TProject;

// Clearing deletes every file in a project's output folder. So clearing is refused for a folder with other
// files that the user or this program needs.

// The folders of the program itself.
struct TOwnFolders {
    QString Program; // of the running program
    QString Data;    // of the project database
};

// Throws TError(BadInput) if the output folder of `project` is one of these:
// - the root of a drive, or the home folder
// - a folder of `own`, or the folder of backups in one of these folders
// - the folder of the project file
// - a folder that holds a source image of the project
// Links are followed, so it does not matter how the path of a folder is written. If the project file or a
// source image is a link, both the folder of the link and the folder of its target are refused. If one of
// these files has further hard links, the folders of the further links are not refused: deleting one hard
// link leaves the file under the others.
void RefuseToClear(const TProject& project, const TOwnFolders& own);

// Returns one sentence if RefuseToClear() would throw, otherwise an empty list.
QStringList ClearWarnings(const TProject& project, const TOwnFolders& own);

} // namespace Corvadine
