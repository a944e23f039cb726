#pragma once

#include <QString>
#include <QStringList>

namespace Corvadine {

struct TProject;

// Clearing deletes every file in a project's output folder, so it must not be a folder with other files that
// the user or this program needs.

// The folders of the program itself.
struct TOwnFolders {
    QString Program; // of the running program
    QString Data;    // of the project database
};

// Throws TError(BadInput) if the output folder of `project` is the root of a drive, the home folder, one of
// `own`, or the folder of the project file, or if it holds a source image of the project. Links are followed:
// it counts which folder is meant, not how its path is written, and a file that is a link lies both in the
// folder of the link and in that of its target. A second hard link does not count, since deleting one name
// leaves the other.
void RefuseToClear(const TProject& project, const TOwnFolders& own);

// One sentence if RefuseToClear() would throw, otherwise nothing.
QStringList ClearWarnings(const TProject& project, const TOwnFolders& own);

} // namespace Corvadine
