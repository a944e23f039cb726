#include "support/update/rules/StagedUpdate.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/update/rules/FileHash.h"
#include "support/update/rules/UpdateSignature.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QHash>

namespace Corvadine {

namespace {

QString StagedControlFile(const TUpdateFolder& folder)
{
    return folder.Staging() + u"/Corvadine.INF"_s;
}

QString ChosenList(const TUpdateFolder& folder)
{
    return folder.Staging() + u"/chosen"_s;
}

QByteArray ReadStaged(const QString& path, qint64 mostBytes)
{
    if (QFileInfo(path).size() > mostBytes)
        throw TError(TErrorKind::BadInput, u"read"_s, path, u"it is too large"_s);
    return ReadFile(path, u"read the staged update"_s);
}

// Returns the relative names of all files below `folder`, sorted. Throws TError for a link, because its
// target could change after the check.
QStringList FilesBelow(const QString& folder)
{
    QStringList names;
    QDirIterator files(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QFileInfo info = files.nextFileInfo();
        if (info.isSymLink() || info.isJunction())
            throw TError(TErrorKind::BadInput, u"use"_s, info.filePath(), u"it is a link"_s);
        if (!info.isDir())
            names.append(info.filePath().mid(folder.size() + 1));
    }
    names.sort();
    return names;
}

TError Incomplete(const QString& name)
{
    return { TErrorKind::BadInput, u"use the downloaded update"_s, name, u"it is not complete"_s };
}

// Returns the targets that were chosen for the download, sorted. Throws TError if a mandatory newer file was
// not chosen.
QStringList ChosenTargets(const TControlFile& control, const TUpdateSettings& settings)
{
    const QString list = ChosenList(settings.Folder);
    constexpr qint64 MostBytes = 256LL * 1024; // more than all names of a control file take
    QStringList chosen = QString::fromUtf8(ReadStaged(list, MostBytes)).split(u'\n', Qt::SkipEmptyParts);
    chosen.sort();
    if (chosen.isEmpty())
        throw Incomplete(list);
    for (const TUpdateFile& file : control.Files)
        if (file.Mandatory && !chosen.contains(file.Target)
            && IsNewer(file, settings)) // last, because it reads the file
            throw Incomplete(file.Target);
    return chosen;
}

} // namespace

void StageControlFile(const TUpdateFolder& folder, const QByteArray& bytes, const QByteArray& signature,
    const std::vector<TUpdateFile>& chosen)
{
    QByteArray targets;
    for (const TUpdateFile& file : chosen)
        targets += file.Target.toUtf8() + '\n';
    targets.chop(1);
    const QString path = StagedControlFile(folder);
    WriteFileAtomically(path, bytes);
    WriteFileAtomically(path + TUpdateSettings::SignatureSuffix, signature);
    WriteFileAtomically(ChosenList(folder), targets);
}

TStagedUpdate ReadStagedUpdate(const TUpdateSettings& settings)
{
    const QString controlPath = StagedControlFile(settings.Folder);
    const TControlFile control = ReadControlFile(ReadStaged(controlPath, settings.Limits.ControlFile),
        ReadStaged(controlPath + TUpdateSettings::SignatureSuffix, SignatureBytes), settings.PublicKey,
        settings.Limits);
    if (!IsOffered(control, settings))
        throw TError(TErrorKind::BadInput, u"Version %1 was withdrawn"_s.arg(control.Version));

    QHash<QString, TUpdateFile> named;
    for (const TUpdateFile& file : control.Files)
        if (IsForPlatform(file, settings))
            named.insert(file.Target, file);

    TStagedUpdate update { control.Version, {} };
    const QStringList staged = FilesBelow(settings.Folder.StagedFiles());
    for (const QString& target : staged) {
        const QString path = settings.Folder.StagedPath(target);
        const auto file = named.constFind(target);
        if (file == named.cend())
            throw TError(TErrorKind::BadInput, u"use"_s, path, u"the publisher's list does not name it"_s);
        VerifyFile(path, target, file->Size, file->Sha256);
        update.Files.push_back(*file);
    }
    if (staged != ChosenTargets(control, settings))
        throw Incomplete(settings.Folder.StagedFiles());
    return update;
}

} // namespace Corvadine
