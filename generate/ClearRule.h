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
// `own` or its folder of backups, or the folder of the project file, or if it holds a source image of the
// project. Links are followed, so it does not matter how the path of a folder is written. A source image that
// is a link lies in two folders: that of the link and that of its target. Other hard links to a source image
// do not count, because deleting one name leaves the others.
void RefuseToClear(const TProject& project, const TOwnFolders& own);

// One sentence if RefuseToClear() would throw, otherwise nothing.
QStringList ClearWarnings(const TProject& project, const TOwnFolders& own);

} // namespace Corvadine
