#include "base/SystemFiles.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

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
    QStringDecoder local(QStringConverter::System);
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
