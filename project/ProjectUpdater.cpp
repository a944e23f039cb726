#include "project/ProjectUpdater.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/PathRules.h"
#include "project/Backups.h"
#include "project/ProjectPaths.h"

#include <optional>

namespace Corvadine {

namespace {

QByteArray ReadProjectFile(const QString& projectFile)
{
    return ReadFile(projectFile, QStringLiteral("read the project file"));
}

void CheckImages(const TProjectImages& images)
{
    if (!FileExists(images.ProjectFile))
        throw TError(TErrorKind::NotFound, MissingProjectText);
    if (images.OutputFolder.isEmpty())
        throw TError(TErrorKind::Usage, QStringLiteral("update"), images.ProjectFile,
            QStringLiteral("the project has no output folder"));
}

// Returns the backup's path; empty if none could be made and none is required.
QString BackUp(const QString& projectFile, const QByteArray& bytes, const TBackupOrder& backup)
{
    try {
        std::optional<TNewFolder> folder;
        if (backup.Policy == TBackupPolicy::Required)
            folder.emplace(backup.Folder);
        return WriteBackup(projectFile, bytes, backup.Folder, backup.Time, backup.Kept);
    } catch (const TError& error) {
        if (backup.Policy == TBackupPolicy::BestEffort)
            return {};
        throw TError(error.Kind(), QStringLiteral("back up"), projectFile,
            QStringLiteral("%1; the project file is unchanged").arg(error.Text()));
    }
}

TUpdateResult SetImagePaths(TProjectDocument& document, const TProjectImages& images, TImageFiles files)
{
    TUpdateResult result;
    const QString relativeFolder = RelativeFolder(images.ProjectFile, images.OutputFolder);
    const QString outputFolder = WithTrailingDelimiter(images.OutputFolder);
    for (const QString& id : images.IDs) {
        const QString fileName = ImageFileName(id);
        if (files == TImageFiles::Existing && !FileExists(outputFolder + fileName))
            continue;
        const auto changes = document.SetText(id, relativeFolder + fileName);
        if (changes.empty())
            result.MissingIDs.append(id);
        result.Changes.insert(result.Changes.end(), changes.begin(), changes.end());
    }
    result.UpdatedCount = static_cast<int>(result.Changes.size());
    return result;
}

} // namespace

QString TUpdateResult::ClosingMessage() const
{
    const QString lineEnd = QStringLiteral("\r\n");
    const QString list = MissingIDs.isEmpty() ? QString() : lineEnd;
    return CountMessage() + list + lineEnd + BackupMessage();
}

QString TUpdateResult::CountMessage() const
{
    const QString rest = MissingIDs.isEmpty()
        ? QStringLiteral(" Entries updated.")
        : QStringLiteral(
            " Entries updated, the following entries were not found and need to be set manually:");
    return QString::number(UpdatedCount) + rest;
}

QString TUpdateResult::BackupMessage()
{
    return QStringLiteral("A backup of the project file was made first.");
}

TUpdateResult PlanUpdate(const TProjectImages& images, TImageFiles files)
{
    CheckImages(images);
    TProjectDocument document(ReadProjectFile(images.ProjectFile), images.ProjectFile);
    return SetImagePaths(document, images, files);
}

TUpdateResult UpdateProject(const TProjectImages& images, const TBackupOrder& backup)
{
    CheckImages(images);
    // Read once, so that the backup holds the very content that is edited.
    const QByteArray bytes = ReadProjectFile(images.ProjectFile);
    QString backupPath;
    if (backup.Policy == TBackupPolicy::BestEffort)
        backupPath = BackUp(images.ProjectFile, bytes, backup);
    TProjectDocument document(bytes, images.ProjectFile);
    TUpdateResult result = SetImagePaths(document, images, TImageFiles::Existing);
    const QByteArray newBytes = document.Bytes();
    if (backup.Policy == TBackupPolicy::Required && newBytes != bytes)
        backupPath = BackUp(images.ProjectFile, bytes, backup);
    result.BackupPath = backupPath;
    result.IsWritten = SaveProjectFile(images.ProjectFile, bytes, newBytes);
    return result;
}

bool SaveProjectFile(const QString& projectFile, const QByteArray& bytesRead, const QByteArray& newBytes)
{
    if (newBytes == bytesRead)
        return false;
    if (ReadProjectFile(projectFile) != bytesRead)
        throw TError(TErrorKind::Conflict, QStringLiteral("save the project file"), projectFile,
            QStringLiteral("another program has changed it meanwhile"));
    WriteFileAtomically(projectFile, newBytes);
    return true;
}

} // namespace Corvadine
