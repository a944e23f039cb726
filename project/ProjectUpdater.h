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
    // For the window: a backup before every update, even if an equal copy exists. If the backup fails, the
    // update goes on.
    BestEffort,
    // For the command line: a backup only before an update that changes the file. Equal content is kept
    // once, so that a build server does not fill the folder with equal copies. If the backup fails, the file
    // stays unchanged.
    Required,
};

struct TBackupOrder {
    TBackups& Backups;
    QDateTime Time; // local; becomes part of the backup's name
    TBackupPolicy Policy = TBackupPolicy::Required;
};

// Which images are entered into the project file.
enum class TImageFiles {
    Existing, // only images whose file exists
    Assumed,  // all, as if they had been generated
};

struct TUpdateResult {
    int UpdatedCount = 0;                // elements set, including elements that had the text already
    QStringList MissingIDs;              // IDs of the images that have no element
    std::vector<TElementChange> Changes; // one for each element set, grouped by image
    QString BackupPath;                  // empty if none was made
    bool IsWritten = false;              // false if the file has all texts already

    // Returns the message after an update: CountMessage() and BackupMessage(), with CR LF between lines. The
    // message names no missing IDs. Even if the backup failed, the message says that a backup was made.
    QString ClosingMessage() const;
    // Returns a text with the number of elements set. The text ends in a colon if there are missing IDs.
    QString CountMessage() const;
    static QString BackupMessage();
};

// Returns what UpdateProject() would set. Makes no backup and writes nothing. Throws TError as
// UpdateProject() does.
TUpdateResult PlanUpdate(const TProjectImages& images, TImageFiles files);

// Makes a backup of the project file as `backup` says, sets the paths of the images that exist, and saves the
// file in one step. When this throws, the project file is unchanged. Throws TError of these kinds:
// - Io: the project file is missing (with MissingProjectText), or reading, writing or a required backup
//   fails.
// - BadInput: TProjectDocument refuses the file or an image's path.
// - Usage: the project has no output folder, or a required backup has no folder.
// - Conflict: another program saved the file meanwhile.
TUpdateResult UpdateProject(const TProjectImages& images, const TBackupOrder& backup);

} // namespace Corvadine
