#include "project/ProjectUpdater.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/PathRules.h"
#include "base/StagedFile.h"
#include "project/ProjectPaths.h"

namespace Corvadine {

namespace {

QByteArray ReadProjectFile(const QString& projectFile)
{
    return ReadFile(projectFile, u"read the project file"_s);
}

void CheckImages(const TProjectImages& images)
{
    if (!FileExists(images.ProjectFile))
        throw TError(TErrorKind::Io, MissingProjectText);
    if (images.OutputFolder.isEmpty())
        throw TError(
            TErrorKind::Usage, u"update"_s, images.ProjectFile, u"the project has no output folder"_s);
}

// Returns the path of the backup. Returns an empty path if the backup failed and is not required.
QString BackUp(const QString& projectFile, const QByteArray& bytes, const TBackupOrder& backup)
{
    const bool isRequired = backup.Policy == TBackupPolicy::Required;
    const auto keep = [&] {
        return backup.Backups.Keep(
            projectFile, bytes, backup.Time, TBackupReason::Update, isRequired ? TKeep::Once : TKeep::Always);
    };
    try {
        return keep();
    } catch (const TError& error) {
        if (isRequired)
            throw TError(error.Kind(), u"back up"_s, projectFile,
                u"%1; the project file is unchanged"_s.arg(error.Text()));
    }
    try {
        return backup.Backups.KeepUnrecorded(projectFile, bytes, backup.Time);
    } catch (const TError&) {
        return {};
    }
}

// Replaces the project file, which was read as `bytesRead`, by `newBytes`. Returns false, and writes nothing,
// if both are equal. Throws TError(Conflict) if the file no longer holds `bytesRead`. Throws TError(Io) if
// reading or writing fails.
bool SaveProjectFile(const QString& projectFile, const QByteArray& bytesRead, const QByteArray& newBytes)
{
    if (newBytes == bytesRead)
        return false;
    TStagedFile staged(projectFile, newBytes);
    // The comparison comes last, so that other programs have hardly any time to change the file unseen.
    if (ReadProjectFile(projectFile) != bytesRead)
        throw TError(TErrorKind::Conflict, u"save the project file"_s, projectFile,
            u"another program has changed it meanwhile"_s);
    staged.Commit();
    return true;
}

TUpdateResult SetImagePaths(TProjectDocument& document, const TProjectImages& images, TImageFiles files)
{
    TUpdateResult result;
    const QString relativeFolder = RelativeFolder(images.ProjectFile, images.OutputFolder);
    const QString outputFolder = WithTrailingDelimiter(images.OutputFolder);
    for (const auto& [id, fileName] : images.Images) {
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
    const QString lineEnd = u"\r\n"_s;
    const QString list = MissingIDs.isEmpty() ? QString() : lineEnd;
    return CountMessage() + list + lineEnd + BackupMessage();
}

QString TUpdateResult::CountMessage() const
{
    const QString rest = MissingIDs.isEmpty()
        ? u" Entries updated."_s
        : u" Entries updated, the following entries were not found and need to be set manually:"_s;
    return QString::number(UpdatedCount) + rest;
}

QString TUpdateResult::BackupMessage()
{
    return u"A backup of the project file was made first."_s;
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
    // The file is read once, so that the backup holds the same content that is edited.
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

} // namespace Corvadine
