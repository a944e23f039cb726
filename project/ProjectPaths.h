#pragma once

#include <QString>

// The names of a project file and its output folder. The functions look at the text only, not at the disk,
// and work alike on every system. Both '/' and '\' separate folders, because a project made on Windows is
// also built on other systems.
namespace Corvadine {

// Whether `path` ends in ".dproj", in upper or lower case.
bool IsProjectFileName(const QString& path);

// Returns the output folder of a new project: "C:\Dev\Demo.dproj" gives "C:\Dev\Demo\Corvadine".
// REQUIRES: IsProjectFileName(projectFile).
QString DeriveOutputFolder(const QString& projectFile);

// Returns `outputFolder` in the form that the project file needs: relative to the folder of `projectFile`,
// with backslashes. The result is empty or ends in a backslash. A folder on another drive or network share
// stays absolute. REQUIRES: both paths are absolute.
QString RelativeFolder(const QString& projectFile, const QString& outputFolder);

} // namespace Corvadine
