#include "base/Files.h"

#include "base/Error.h"
#include "base/StagedFile.h"
#include "base/SystemFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace Corvadine {

bool FileExists(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() && !info.isDir();
}

bool FolderExists(const QString& path)
{
    return !path.isEmpty() && QFileInfo(path).isDir();
}

bool IsSameFile(const QString& left, const QString& right)
{
    const auto identity = FileIdentity(left);
    const auto other = FileIdentity(right);
    if (identity && other)
        return *identity == *other;
    return IsSameFileName(AbsolutePath(left), AbsolutePath(right));
}

void OpenForReading(QFile& file, const QString& attempt)
{
    const QFileInfo info(file.fileName());
    if (!info.exists())
        throw TError(TErrorKind::Io, attempt, file.fileName(), u"the file does not exist"_s);
    if (info.isDir())
        throw TError(TErrorKind::Io, attempt, file.fileName(), u"it is a folder"_s);
    if (!info.isFile()) // opening a pipe would wait until another program writes to it
        throw TError(TErrorKind::Io, attempt, file.fileName(), u"it is not a regular file"_s);
    if (!file.open(QIODevice::ReadOnly))
        throw TError(TErrorKind::Io, attempt, file.fileName(), file.errorString());
}

QByteArray ReadFile(const QString& path, const QString& attempt)
{
    QFile file(path);
    OpenForReading(file, attempt);
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw TError(TErrorKind::Io, attempt, path, file.errorString());
    return bytes;
}

void WriteFileAtomically(const QString& path, const QByteArray& bytes)
{
    TStagedFile(path, bytes).Commit();
}

// QDir::removeRecursively() and std::filesystem::remove_all() are not used: they follow junctions and empty
// the target folders.
std::error_code RemoveTree(const QString& path)
{
    const QFileInfo info(path);
    const bool isLink = info.isSymLink() || info.isJunction();
    if (!isLink && !info.exists())
        return {};
    std::error_code first;
    if (info.isDir() && !isLink) {
        QDirIterator entries(path, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        while (entries.hasNext())
            if (const std::error_code error = RemoveTree(entries.next()); error && !first)
                first = error;
    }
    const std::error_code error = RemoveEntry(path);
    return first ? first : error;
}

void CreateFolder(const QString& path)
{
    const QString attempt = u"create the folder"_s;
    if (FolderExists(path))
        return;
    if (FileExists(path))
        throw TError(TErrorKind::Io, attempt, path, u"a file of that name is in the way"_s);
    const std::error_code error = MakeFolders(path);
    if (!FolderExists(path))
        throw TError(TErrorKind::Io, attempt, path,
            error ? SystemErrorText(error) : u"it cannot be found afterwards"_s);
}

// Returns the missing folders among `path` and its parents, the deepest folder first.
static QStringList MissingFolders(const QString& path)
{
    QStringList missing;
    QString folder = QDir::cleanPath(path);
    while (!QFileInfo::exists(folder)) {
        missing.append(folder);
        const QString parent = QFileInfo(folder).path();
        if (parent == folder) // the root of a missing drive
            break;
        folder = parent;
    }
    return missing;
}

TNewFolder::TNewFolder(const QString& path) : TNewFolder()
{
    FCreated = MissingFolders(path);
    CreateFolder(path); // if this throws, the destructor removes the folders made so far
}

TNewFolder::~TNewFolder()
{
    for (const QString& folder : std::as_const(FCreated))
        if (FolderExists(folder)
            && !QDir().rmdir(folder)) // refuses a folder that is not empty: the job has filled it
            break;
}

QString AbsolutePath(const QString& path)
{
    return QDir::toNativeSeparators(WithoutDroppedEnd(QDir::cleanPath(QFileInfo(path).absoluteFilePath())));
}

} // namespace Corvadine
