#include "generate/ClearRule.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/PathRules.h"
#include "base/SystemFiles.h"
#include "store/BackupIndex.h"
#include "store/Project.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace Corvadine {

namespace {

// Whether `folder` holds `file`. If `file` is a link, the files that the link leads to count as well.
bool Holds(const QString& folder, const QString& file)
{
    constexpr int MostLinks = 40; // a longer chain counts as a circle
    QString path = file;
    for (int links = 0; links <= MostLinks && !FolderOf(path).isEmpty(); ++links) {
        if (IsSameFile(folder, FolderOf(path)))
            return true;
        // The target of a link may be relative to the folder that really holds the link.
        const QString place = QFileInfo(FolderOf(path)).canonicalFilePath();
        if (place.isEmpty()) // the folder does not exist
            return false;
        path = QFileInfo(QDir(place).filePath(FileNameOf(path))).symLinkTarget(); // empty if it is no link
    }
    return false;
}

bool HoldsSource(const QString& folder, const QString& source)
{
    return FileExists(source) && Holds(folder, source);
}

// Returns the reason against clearing. The message puts it after "Cannot delete the files in FOLDER: ".
// Returns an empty text if nothing forbids clearing.
QString ReasonAgainst(const TProject& project, const TOwnFolders& own)
{
    const QString& folder = project.OutputFolder;
    if (folder.isEmpty())
        return {};
    if (FolderExists(folder) && IsDriveRoot(folder))
        return u"it is the root of a drive"_s;
    if (IsSameFile(folder, QDir::homePath()))
        return u"it is the home folder"_s;
    if (IsSameFile(folder, own.Program))
        return u"it is the program's own folder"_s;
    if (IsSameFile(folder, own.Data))
        return u"it is the folder of the project database"_s;
    for (const QString& owned : { own.Program, own.Data })
        if (IsSameFile(folder, WithTrailingDelimiter(owned) + QString::fromLatin1(BackupFolderName)))
            return u"it is the folder of the backups"_s;
    if (Holds(folder, project.ProjectFile))
        return u"it is the folder of the project file"_s;
    if (HoldsSource(folder, project.IconImageName))
        return u"it holds the icon image %1"_s.arg(project.IconImageName);
    if (HoldsSource(folder, project.SplashImageName))
        return u"it holds the launch image %1"_s.arg(project.SplashImageName);
    return {};
}

} // namespace

void RefuseToClear(const TProject& project, const TOwnFolders& own)
{
    const QString reason = ReasonAgainst(project, own);
    if (!reason.isEmpty())
        throw TError(TErrorKind::BadInput, u"delete the files in"_s, project.OutputFolder, reason);
}

QStringList ClearWarnings(const TProject& project, const TOwnFolders& own)
{
    const QString reason = ReasonAgainst(project, own);
    if (reason.isEmpty())
        return {};
    return { u"The output folder %1 can never be cleared: %2"_s.arg(project.OutputFolder, reason) };
}

} // namespace Corvadine
