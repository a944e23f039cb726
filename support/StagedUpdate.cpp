#include "support/StagedUpdate.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/ControlFile.h"
#include "support/UpdateSignature.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <filesystem>

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

} // namespace

TUpdateLock::TUpdateLock(const QString& programFolder, int waitMilliseconds)
    : FLock(InProgramFolder(programFolder, TUpdateSettings::LockFileName))
{
    FLock.setStaleLockTime(0); // an update may take long; only the end of its process ends its lock
    if (FLock.tryLock(waitMilliseconds))
        return;
    if (FLock.error() == QLockFile::LockFailedError)
        throw TError(TErrorKind::Conflict,
            QStringLiteral(
                "Another copy of Corvadine is being updated in %1; please wait until it has finished")
                .arg(QDir::toNativeSeparators(programFolder)));
    throw TError(TErrorKind::Io, QStringLiteral("update the program in"),
        QDir::toNativeSeparators(programFolder), QStringLiteral("the folder cannot be written"));
}

QString StagingFolderOf(const QString& programFolder)
{
    return InProgramFolder(programFolder, TUpdateSettings::StagingFolderName);
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
    const QString folder = StagingFolderOf(programFolder);
    std::error_code error; // unlike QDir::removeRecursively(), this also removes a link or file in the way
    std::filesystem::remove_all(QFileInfo(folder).filesystemAbsoluteFilePath(), error);
    if (error)
        throw TError(
            TErrorKind::Io, QStringLiteral("remove"), folder, QString::fromStdString(error.message()));
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
    // Comparing with what is installed reads every file, so only for those that need it.
    if (std::any_of(control.Files.begin(), control.Files.end(), isLeftOut))
        for (const std::size_t index : NewerFiles(control, settings))
            if (isLeftOut(control.Files[index]))
                throw Incomplete(control.Files[index].Target);
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
    if (!IsNewRelease(control, settings))
        throw TError(
            TErrorKind::BadInput, QStringLiteral("Version %1 is already installed").arg(control.Version));

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
