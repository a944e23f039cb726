#pragma once

#include <QString>
#include <QStringView>

// How a project file, its output folder and the images in it are named. Rules on text alone, the same on
// every system: both '/' and '\' separate, since a project made on Windows is also built elsewhere.
namespace Corvadine {

// Whether `path` ends in ".dproj" in any mix of capitals.
bool IsProjectFileName(const QString& path);

// The output folder that a new project gets: "C:\Dev\Demo.dproj" gives "C:\Dev\Demo\Corvadine".
// REQUIRES: IsProjectFileName(projectFile).
QString DeriveOutputFolder(const QString& projectFile);

// `outputFolder` as the project file refers to it: relative to the folder of `projectFile`, in backslashes,
// empty or ending in one. A folder on another drive or network share stays absolute. REQUIRES: both are
// absolute.
QString RelativeFolder(const QString& projectFile, const QString& outputFolder);

// The element name of the Windows icon, the only image that is not a PNG.
inline constexpr QStringView MainIconID = u"Icon_MainIcon";

// The file name of the image `id`, with the extension of its format.
QString ImageFileName(const QString& id);

} // namespace Corvadine
