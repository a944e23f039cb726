#pragma once

#include "project/Backups.h"
#include "project/ProjectDocument.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <vector>

// Points a project file at its generated images: each property named after an image gets the image's path,
// relative to the project file's folder.
namespace Corvadine {

// The message for a project file that is missing.
inline constexpr QLatin1String MissingProjectText("The Project does not exist!");

// One image that a project file can point at.
struct TProjectImage {
    QString ID;       // name of the element that receives the path
    QString FileName; // in the output folder
};

// The images of one project, in the order in which their elements are set. All paths are absolute.
struct TProjectImages {
    QString ProjectFile;
    QString OutputFolder;
    std::vector<TProjectImage> Images;
};

// When a backup is made, and what happens if it fails.
enum class TBackupPolicy {
    // For the window: before every update, and always a copy of its own. If the backup fails, the update goes
    // on.
    BestEffort,
    // For the command line: only before an update that changes the file, and equal content is kept once, so
    // that a build server does not fill the folder with equal copies. If the backup fails, the file stays
    // unchanged.
    Required,
};

struct TBackupOrder {
    TBackups& Backups;
    QDateTime Time; // local; becomes part of the backup's name
    TBackupPolicy Policy = TBackupPolicy::Required;
};

// Which images are entered into the project file.
enum class TImageFiles {
    Existing, // only those whose file exists
    Assumed,  // all, as an update would do once they have been generated
};

struct TUpdateResult {
    int UpdatedCount = 0;                // elements set, also those that had the text already
    QStringList MissingIDs;              // images that no element is named after
    std::vector<TElementChange> Changes; // one for each element set, in the order of images, then of the file
    QString BackupPath;                  // empty if none was made
    bool IsWritten = false;              // if not, the update would not have changed the file

    // The message after an update: CountMessage() and BackupMessage(), with CR LF between lines. It names no
    // missing IDs, and says that a backup was made even if that failed.
    QString ClosingMessage() const;
    // Tells how many elements were set. Ends in a colon if there are missing IDs.
    QString CountMessage() const;
    static QString BackupMessage();
};

// Tells what UpdateProject() would set, without a backup and without writing. Throws TError as that does.
TUpdateResult PlanUpdate(const TProjectImages& images, TImageFiles files);

// Makes a backup of the project file as ordered, sets the paths of the images that exist, and saves the file
// in one step. Throws TError, the project file then being as it was: Io, with MissingProjectText if there is
// no such file; BadInput if it is no XML; Usage without an output folder; Conflict if another program saved
// it meanwhile.
TUpdateResult UpdateProject(const TProjectImages& images, const TBackupOrder& backup);

} // namespace Corvadine
