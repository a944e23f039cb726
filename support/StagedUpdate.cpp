#include "support/StagedUpdate.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/ControlFile.h"
#include "support/UpdateSignature.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QHash>

#include <thread>

namespace Corvadine {

namespace {

QString InProgramFolder(const QString& programFolder, QLatin1String name)
{
    return programFolder + u'/' + name;
}

QString StagedControlFile(const QString& programFolder)
{
    return StagingFolderOf(programFolder) + QStringLiteral("/Corvadine.INF");
}

QString ChosenList(const QString& programFolder)
{
    return StagingFolderOf(programFolder) + QStringLiteral("/chosen");
}

QString HandOverNote(const QString& programFolder)
{
    return StagingFolderOf(programFolder) + QStringLiteral("/handed-over");
}

bool IsBeingHandedOver(const QString& programFolder)
{
    constexpr qint64 MostSeconds = 60; // from the start of the helper until it has the lock
    const QFileInfo note(HandOverNote(programFolder));
    return note.exists() && qAbs(note.lastModified().secsTo(QDateTime::currentDateTime())) < MostSeconds;
}

TError InUse(const QString& programFolder)
{
    return { TErrorKind::Conflict,
        QStringLiteral("Another copy of Corvadine is being updated in %1; please wait until it has finished "
                       "(it has locked %2)")
            .arg(QDir::toNativeSeparators(programFolder), TUpdateSettings::LockFileName) };
}

// Denied is what Windows answers as well while somebody looks at the file that the last one to lock it left
// to be deleted.
bool MayPass(const std::error_code& error)
{
    return error == std::errc::device_or_resource_busy || error == std::errc::permission_denied;
}

TError Refusal(const std::error_code& error, const QString& programFolder)
{
    if (error == std::errc::device_or_resource_busy)
        return InUse(programFolder);
    const bool isForbidden =
        error == std::errc::permission_denied || error == std::errc::read_only_file_system;
    return { TErrorKind::Io, QStringLiteral("update the program in"), QDir::toNativeSeparators(programFolder),
        isForbidden ? QStringLiteral("the folder cannot be written") : SystemErrorText(error) };
}

} // namespace

TUpdateLock::TUpdateLock(const QString& programFolder)
    : TUpdateLock(programFolder, std::chrono::milliseconds(200))
{
    if (IsBeingHandedOver(programFolder))
        throw InUse(programFolder);
}

TUpdateLock::TUpdateLock(const QString& programFolder, std::chrono::milliseconds patience)
    : FLock(InProgramFolder(programFolder, TUpdateSettings::LockFileName))
{
    constexpr std::chrono::milliseconds Pause(20);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (const std::error_code error = FLock.TryLock()) {
        if (!MayPass(error) || std::chrono::steady_clock::now() >= deadline)
            throw Refusal(error, programFolder);
        std::this_thread::sleep_for(Pause);
    }
}

void MarkHandedOver(const QString& programFolder)
{
    WriteFileAtomically(HandOverNote(programFolder), {});
}

bool IsHandedOver(const QString& programFolder)
{
    return FileExists(HandOverNote(programFolder));
}

void UnmarkHandedOver(const QString& programFolder)
{
    QFile::remove(HandOverNote(programFolder));
}

QString StagingFolderOf(const QString& programFolder)
{
    return QDir::cleanPath(InProgramFolder(programFolder, TUpdateSettings::TempDirectory) + u'/'
        + TUpdateSettings::StagingFolderName);
}

QString StagedFilesFolderOf(const QString& programFolder)
{
    return StagingFolderOf(programFolder) + QStringLiteral("/files");
}

void StageControlFile(const QString& programFolder, const QByteArray& bytes, const QByteArray& signature,
    const QStringList& chosen)
{
    const QString path = StagedControlFile(programFolder);
    WriteFileAtomically(path, bytes);
    WriteFileAtomically(path + TUpdateSettings::SignatureSuffix, signature);
    WriteFileAtomically(ChosenList(programFolder), chosen.join(u'\n').toUtf8());
}

void RemoveStaging(const QString& programFolder)
{
    UnmarkHandedOver(programFolder); // first: should something else stay, it is nobody's
    const QString folder = StagingFolderOf(programFolder);
    if (const std::error_code error = RemoveTree(folder))
        throw TError(TErrorKind::Io, QStringLiteral("remove"), folder, SystemErrorText(error));
}

namespace {

QByteArray ReadStaged(const QString& path, qint64 mostBytes)
{
    if (QFileInfo(path).size() > mostBytes)
        throw TError(TErrorKind::BadInput, QStringLiteral("read"), path, QStringLiteral("it is too large"));
    return ReadFile(path, QStringLiteral("read the staged update"));
}

// Relative names of all files below `folder`. Links are refused: what they lead to may change after a look.
QStringList FilesBelow(const QString& folder)
{
    QStringList names;
    QDirIterator files(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QFileInfo info = files.nextFileInfo();
        if (info.isSymLink() || info.isJunction())
            throw TError(
                TErrorKind::BadInput, QStringLiteral("use"), info.filePath(), QStringLiteral("it is a link"));
        if (!info.isDir())
            names.append(info.filePath().mid(folder.size() + 1));
    }
    names.sort();
    return names;
}

TError Incomplete(const QString& name)
{
    return { TErrorKind::BadInput, QStringLiteral("use the downloaded update"), name,
        QStringLiteral("it is not complete") };
}

// The targets that the download was made for, sorted, once they are known to make a whole release.
QStringList ChosenTargets(const TControlFile& control, const TUpdateSettings& settings)
{
    const QString list = ChosenList(settings.ProgramFolder);
    constexpr qint64 MostBytes = 256LL * 1024; // more than the names of a control file can take
    QStringList chosen = QString::fromUtf8(ReadStaged(list, MostBytes)).split(u'\n', Qt::SkipEmptyParts);
    chosen.sort();
    if (chosen.isEmpty())
        throw Incomplete(list);
    const auto isLeftOut = [&](const TControlEntry& entry) {
        return entry.Mandatory && IsForPlatform(entry, settings) && !chosen.contains(entry.Target);
    };
    for (const TControlEntry& entry : control.Files)
        if (isLeftOut(entry) && IsNewer(entry, settings)) // in this order: comparing reads the whole file
            throw Incomplete(entry.Target);
    return chosen;
}

} // namespace

TStagedUpdate ReadStagedUpdate(const TUpdateSettings& settings)
{
    const QString controlPath = StagedControlFile(settings.ProgramFolder);
    const QByteArray bytes = ReadStaged(controlPath, settings.Limits.ControlFile);
    VerifySignature(bytes, ReadStaged(controlPath + TUpdateSettings::SignatureSuffix, SignatureBytes),
        settings.PublicKey);
    const TControlFile control = ParseControlFile(bytes, settings.Limits);
    if (!IsOffered(control, settings))
        throw TError(TErrorKind::BadInput, QStringLiteral("Version %1 was withdrawn").arg(control.Version));

    QHash<QString, const TControlEntry*> entries;
    for (const TControlEntry& entry : control.Files)
        if (IsForPlatform(entry, settings))
            entries.insert(entry.Target, &entry);

    const QString folder = StagedFilesFolderOf(settings.ProgramFolder);
    TStagedUpdate update { StagingFolderOf(settings.ProgramFolder), control.Version, {} };
    const QStringList staged = FilesBelow(folder);
    for (const QString& name : staged) {
        const TControlEntry* entry = entries.value(name);
        const QString path = folder + u'/' + name;
        if (!entry)
            throw TError(TErrorKind::BadInput, QStringLiteral("use"), path,
                QStringLiteral("the publisher's list does not name it"));
        VerifyFile(path, name, entry->Size, entry->Sha256);
        update.Files.push_back({ name, path, entry->Size, entry->Sha256 });
    }
    if (staged != ChosenTargets(control, settings))
        throw Incomplete(folder);
    return update;
}

} // namespace Corvadine
