#include "project/Backups.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/PathRules.h"
#include "base/StagedFile.h"
#include "base/SystemFiles.h"
#include "project/ProjectDocument.h"

#include <QDir>
#include <QFile>

#include <algorithm>

namespace Corvadine {

namespace {

constexpr qsizetype StampLength = 14; // YYYYMMDDHHNNSS

// What stands before the time. Five characters and not the six of ".dproj" are cut off, which leaves a full
// stop before the time.
QString StemOf(const QString& projectFile)
{
    const QString name = FileNameOf(projectFile);
    return name.left(std::max(name.size() - 5, qsizetype { 0 }));
}

QString BackupName(const QString& projectFile, const QString& stamp)
{
    return StemOf(projectFile) + stamp + ExtensionOf(projectFile);
}

// Invalid unless `stamp` is a time. Digits and not a local time are checked: a change of time zone or an hour
// skipped in spring must not hide a backup.
QDateTime TimeOf(const QString& stamp)
{
    const QDate date = QDate::fromString(stamp.left(8), QStringLiteral("yyyyMMdd"));
    const QTime time = QTime::fromString(stamp.mid(8), QStringLiteral("HHmmss"));
    return date.isValid() && time.isValid() ? QDateTime(date, time) : QDateTime();
}

// What the content of a project file tells, good or not.
struct TContentInfo {
    QString ProjectGuid;
    QString Fault;
};

TContentInfo InfoIn(const QByteArray& bytes, const QString& file)
{
    try {
        return { TProjectDocument(bytes, file).ProjectGuid(), {} };
    } catch (const TError& error) {
        return { {}, error.Reason() };
    }
}

// A missing file has a fault, too.
TContentInfo InfoOf(const QString& file)
{
    try {
        return InfoIn(ReadFile(file, QStringLiteral("read")), file);
    } catch (const TError& error) {
        return { {}, error.Reason() };
    }
}

bool IsDamaged(const TBackup& backup)
{
    return !backup.Fault.isEmpty();
}

bool AreDifferentProjects(const QString& guid, const QString& otherGuid)
{
    return !guid.isEmpty() && !otherGuid.isEmpty() && guid.compare(otherGuid, Qt::CaseInsensitive) != 0;
}

// Also those of other projects; oldest first.
std::vector<TBackup> BackupsNamedAfter(const QString& projectFile, const QString& backupFolder)
{
    std::vector<TBackup> backups;
    const QString folder = WithTrailingDelimiter(backupFolder);
    const qsizetype stampStart = StemOf(projectFile).size();
    for (const QString& name : QDir(backupFolder).entryList(QDir::Files | QDir::Hidden)) {
        const QString stamp = name.mid(stampStart, StampLength);
        const QDateTime time = TimeOf(stamp);
        if (time.isNull() || !IsSameFileName(name, BackupName(projectFile, stamp)))
            continue;
        const auto [guid, fault] = InfoOf(folder + name);
        backups.push_back({ name, folder + name, time, guid, fault });
    }
    std::sort(backups.begin(), backups.end(), [stampStart](const TBackup& a, const TBackup& b) {
        return a.Name.mid(stampStart) < b.Name.mid(stampStart);
    });
    return backups;
}

TError RestoreRefusal(TErrorKind kind, const QString& file, const QString& reason)
{
    return { kind, QStringLiteral("restore"), file, reason };
}

TBackup FindByName(const QString& projectFile, const QString& backupFolder, const QString& name)
{
    if (FileNameOf(name) != name)
        throw RestoreRefusal(TErrorKind::Usage, projectFile,
            QStringLiteral("%1 is a path, not the name of a backup").arg(name));
    const auto backups = BackupsNamedAfter(projectFile, backupFolder);
    const auto found = std::find_if(backups.cbegin(), backups.cend(),
        [&](const TBackup& backup) { return IsSameFileName(backup.Name, name); });
    if (found == backups.cend())
        throw RestoreRefusal(
            TErrorKind::NotFound, projectFile, QStringLiteral("it has no backup %1").arg(name));
    const QString guid = InfoOf(projectFile).ProjectGuid;
    if (AreDifferentProjects(guid, found->ProjectGuid))
        throw RestoreRefusal(TErrorKind::Conflict, projectFile,
            QStringLiteral("the backup %1 belongs to another project (ProjectGuid %2 instead of %3)")
                .arg(name, found->ProjectGuid, guid));
    return *found;
}

TBackup FindNewest(const QString& projectFile, const QString& backupFolder)
{
    auto backups = ListBackups(projectFile, backupFolder);
    if (!std::all_of(backups.cbegin(), backups.cend(), IsDamaged))
        std::erase_if(backups, IsDamaged);
    if (backups.empty())
        throw RestoreRefusal(TErrorKind::NotFound, projectFile,
            QStringLiteral("there is no backup of it in %1").arg(backupFolder));
    const TBackup& newest = backups.back();
    const bool isAmbiguous = std::any_of(backups.cbegin(), backups.cend(),
        [&](const TBackup& backup) { return AreDifferentProjects(backup.ProjectGuid, newest.ProjectGuid); });
    if (isAmbiguous)
        throw RestoreRefusal(TErrorKind::Usage, projectFile,
            QStringLiteral("there are backups of several projects of this name; name the backup"));
    return newest;
}

// Putting back a damaged copy would lose nothing only where nothing better stands.
void RefuseDamaged(const TBackup& backup, const QString& projectFile)
{
    if (IsDamaged(backup) && InfoOf(projectFile).Fault.isEmpty())
        throw RestoreRefusal(TErrorKind::BadInput, projectFile,
            QStringLiteral("the backup %1 is damaged: %2").arg(backup.Name, backup.Fault));
}

QDateTime FirstFreeSecond(const QString& projectFile, const QString& backupFolder, QDateTime time)
{
    while (QFile::exists(BackupPath(projectFile, backupFolder, time)))
        time = time.addSecs(1);
    return time;
}

} // namespace

QString BackupPath(const QString& projectFile, const QString& backupFolder, const QDateTime& time)
{
    return WithTrailingDelimiter(backupFolder)
        + BackupName(projectFile, time.toString(QStringLiteral("yyyyMMddHHmmss")));
}

QString WriteBackup(const QString& projectFile, const QByteArray& bytes, const QString& backupFolder,
    const QDateTime& time, const QStringList& kept)
{
    if (backupFolder.isEmpty()) // which would be the current folder, wherever that is
        throw TError(TErrorKind::Usage, QStringLiteral("No folder for backups was given"));
    const QString guid = InfoIn(bytes, projectFile).ProjectGuid;
    QString path = BackupPath(projectFile, backupFolder, time);
    for (qint64 later = 1;
         kept.contains(path, FileNameCase()) || AreDifferentProjects(guid, InfoOf(path).ProjectGuid); ++later)
        path = BackupPath(projectFile, backupFolder, time.addSecs(later));
    // A project may hold passwords, so its copy is not open to more people at any time.
    TStagedFile(path, bytes, projectFile).Commit();
    return path;
}

std::vector<TBackup> ListBackups(const QString& projectFile, const QString& backupFolder)
{
    auto backups = BackupsNamedAfter(projectFile, backupFolder);
    const QString guid = InfoOf(projectFile).ProjectGuid;
    std::erase_if(
        backups, [&](const TBackup& backup) { return AreDifferentProjects(guid, backup.ProjectGuid); });
    return backups;
}

TRestoredBackup RestoreBackup(
    const QString& projectFile, const QString& backupFolder, const QString& name, const QDateTime& now)
{
    const TBackup backup =
        name.isEmpty() ? FindNewest(projectFile, backupFolder) : FindByName(projectFile, backupFolder, name);
    RefuseDamaged(backup, projectFile);
    const QByteArray bytes = ReadFile(backup.Path, QStringLiteral("read the backup"));
    TRestoredBackup restored { backup.Path, {} };
    if (FileExists(projectFile)) {
        const QByteArray present = ReadFile(projectFile, QStringLiteral("read the project file"));
        restored.SavedPath =
            WriteBackup(projectFile, present, backupFolder, FirstFreeSecond(projectFile, backupFolder, now));
    }
    WriteFileAtomically(projectFile, bytes);
    return restored;
}

} // namespace Corvadine
