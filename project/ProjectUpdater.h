#pragma once

#include "project/ProjectDocument.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <vector>

// Points a project file at its generated images: each property named after an image gets the image's path,
// relative to the project file's folder.
namespace Corvadine {

// What the user is told of a project file that is not there.
inline constexpr QLatin1String MissingProjectText("The Project does not exist!");

// The images of one project. All paths are absolute.
struct TProjectImages {
    QString ProjectFile;
    QString OutputFolder;
    QStringList IDs; // property and base file name of each image, in the order of the generation list
};

// When a backup is made, and what to do when it cannot be.
enum class TBackupPolicy {
    // Before every update; without it, go on: somebody sits in front of the window and wants the update.
    BestEffort,
    // Before an update that changes the file; without it, leave the file alone. A build server that updates
    // at each build would bury the backups that matter under copies of the same. A missing backup folder is
    // created.
    Required,
};

struct TBackupOrder {
    QString Folder;
    QDateTime Time; // local; becomes part of the backup's name
    TBackupPolicy Policy = TBackupPolicy::Required;
    QStringList Kept {}; // paths of backups that this one must not replace: those made before in the same go
};

// Which images count as there.
enum class TImageFiles {
    Existing, // those with a file in the output folder; the others are passed over in silence
    Assumed,  // all: what an update would do once they have been generated
};

struct TUpdateResult {
    int UpdatedCount = 0;                // elements set, also those that had the text already
    QStringList MissingIDs;              // images that no element is named after
    std::vector<TElementChange> Changes; // one for each element set, by image and then by place in the file
    QString BackupPath;                  // empty if none was made
    bool IsWritten = false; // false: the file already was as it should be and has not been touched

    // What the user is told after an update, with CR LF between lines: the next two. It names no IDs, and
    // speaks of a backup whether or not one could be made.
    QString ClosingMessage() const;
    // How many elements were set; ends in a colon if there are missing IDs.
    QString CountMessage() const;
    static QString BackupMessage();
};

// What UpdateProject() would set, without backup and without writing. Throws TError as that does.
TUpdateResult PlanUpdate(const TProjectImages& images, TImageFiles files);

// Backs the project file up as ordered, sets the paths of the images that exist, and saves it in one step.
// Throws TError, the project file then being as it was: NotFound (MissingProjectText), BadInput
// for one that is no XML, Usage without an output folder, Conflict if somebody else saved it meanwhile, Io.
TUpdateResult UpdateProject(const TProjectImages& images, const TBackupOrder& backup);

// Saves `newBytes` as the project file that was read as `bytesRead`. Returns false, without touching it, if
// they are the same. Throws TError: Conflict if the file no longer holds `bytesRead`, Io.
bool SaveProjectFile(const QString& projectFile, const QByteArray& bytesRead, const QByteArray& newBytes);

} // namespace Corvadine
