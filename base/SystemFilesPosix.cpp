#include "base/SystemFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>
#include <QStringDecoder>

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace Corvadine {

Qt::CaseSensitivity FileNameCase()
{
    return Qt::CaseSensitive;
}

QString LegacyText(const QByteArray& bytes)
{
    QStringDecoder local(
        QStringConverter::System, QStringConverter::Flag::Stateless); // also reports a cut end
    QString text = local.decode(bytes);
    if (!local.hasError())
        return text;
    QStringDecoder western("windows-1252");
    return western.isValid() ? QString(western.decode(bytes)) : QString::fromLatin1(bytes);
}

QString WithoutDroppedEnd(const QString& path)
{
    return path;
}

std::optional<TFileIdentity> FileIdentity(const QString& path)
{
    struct stat status { };
    if (::stat(QFile::encodeName(path).constData(), &status) != 0)
        return std::nullopt;
    return TFileIdentity { status.st_dev, status.st_ino };
}

bool IsDriveRoot(const QString& folder)
{
    const QString path = QFileInfo(folder).canonicalFilePath();
    const QStorageInfo volume(path);
    const bool isWholeVolume = volume.subvolume().isEmpty();
    return QDir(path).isRoot() || (isWholeVolume && volume.rootPath() == path);
}

std::error_code MakeFolders(const QString& path)
{
    std::error_code error; // not QDir::mkpath(), which does not tell the reason
    std::filesystem::create_directories(QFileInfo(path).filesystemAbsoluteFilePath(), error);
    return error;
}

bool DeleteWritableFile(const QString& path)
{
    constexpr auto AnyoneMayWrite = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
    const QFileInfo info(path);
    // A link has no permissions of its own. The permissions of its target do not count, because the target is
    // not deleted.
    const bool isReadOnly = !info.isSymLink() && info.exists() && !(info.permissions() & AnyoneMayWrite);
    return !isReadOnly && QFile::remove(path);
}

std::error_code RemoveEntry(const QString& path)
{
    const bool isRemoved = std::remove(QFile::encodeName(path).constData()) == 0;
    return { isRemoved ? 0 : errno, std::system_category() };
}

QByteArray PathForLibrary(const QString& path)
{
    return QFile::encodeName(path);
}

} // namespace Corvadine
