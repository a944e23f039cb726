#include "base/StagedFile.h"

#include "base/Error.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace Corvadine {

namespace {

TError WriteError(const QString& path, int errorNumber)
{
    return { TErrorKind::Io, QStringLiteral("write"), path, SystemErrorText(errorNumber) };
}

QByteArray FollowLinks(const QString& path)
{
    const QFileInfo info(path);
    if (info.exists())
        return QFile::encodeName(info.canonicalFilePath());
    return QFile::encodeName(info.isSymLink() ? info.symLinkTarget() : path);
}

// Renaming over a file needs no permission on the file itself, so a read-only one is refused here by hand.
// The mode bits are looked at because the superuser is never refused by access().
void RefuseUnwritableTarget(const QString& path, const QByteArray& target)
{
    struct stat status { };
    if (::stat(target.constData(), &status) != 0)
        return;
    if (S_ISDIR(status.st_mode))
        throw WriteError(path, EISDIR);
    constexpr mode_t AnyoneMayWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    if ((status.st_mode & AnyoneMayWrite) == 0)
        throw TError(TErrorKind::Io, QStringLiteral("write"), path, QStringLiteral("the file is read-only"));
    if (::access(target.constData(), W_OK) != 0)
        throw WriteError(path, errno);
}

QByteArray FolderPart(const QByteArray& target)
{
    const auto slash = target.lastIndexOf('/');
    return slash < 0 ? QByteArray(".") : target.left(slash + 1);
}

constexpr mode_t NewFileMode = 0666; // narrowed by the umask

} // namespace

TStagedFile::TStagedFile(const QString& path) : FPath(path), FTarget(FollowLinks(path)) { }

// Delegates, so that a throw from here on runs the destructor.
TStagedFile::TStagedFile(const QString& path, const QByteArray& bytes) : TStagedFile(path)
{
    RefuseUnwritableTarget(path, FTarget);
#ifdef O_TMPFILE
    // A file without a name: killed now, we leave nothing behind.
    FDescriptor = ::open(FolderPart(FTarget).constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, NewFileMode);
#endif
    if (FDescriptor
        < 0) { // the file system cannot do that, or the folder is at fault and the next call says so
        FTemporary = FTarget + ".XXXXXX";
        FDescriptor = ::mkostemp(FTemporary.data(), O_CLOEXEC);
        if (FDescriptor < 0) {
            FTemporary.clear();
            throw WriteError(path, errno);
        }
        const mode_t mask = ::umask(0);
        ::umask(mask);
        ::fchmod(FDescriptor, NewFileMode & ~mask);
    }
    CopyAttributesOfTarget();
    WriteAndSync(bytes);
}

TStagedFile::~TStagedFile()
{
    if (FDescriptor >= 0)
        ::close(FDescriptor);
    if (!FTemporary.isEmpty())
        ::unlink(FTemporary.constData());
}

TStagedFile::TStagedFile(TStagedFile&& other) noexcept
    : FPath(std::move(other.FPath))
    , FTarget(std::move(other.FTarget))
    , FTemporary(std::exchange(other.FTemporary, {}))
    , FDescriptor(std::exchange(other.FDescriptor, -1))
{
}

void TStagedFile::Commit()
{
    if (FTemporary.isEmpty()) {
        const QByteArray byDescriptor = "/proc/self/fd/" + QByteArray::number(FDescriptor);
        FTemporary = FTarget + ".new" + QByteArray::number(::getpid());
        ::unlink(FTemporary.constData());
        if (::linkat(AT_FDCWD, byDescriptor.constData(), AT_FDCWD, FTemporary.constData(), AT_SYMLINK_FOLLOW)
            != 0) {
            FTemporary.clear();
            throw WriteError(FPath, errno);
        }
    }
    if (::rename(FTemporary.constData(), FTarget.constData()) != 0)
        throw WriteError(FPath, errno);
    FTemporary.clear();
}

void TStagedFile::WriteAndSync(const QByteArray& bytes)
{
    const char* next = bytes.constData();
    auto left = static_cast<std::size_t>(bytes.size());
    while (left > 0) {
        const ssize_t written = ::write(FDescriptor, next, left);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            throw WriteError(FPath, errno);
        next += written;
        left -= static_cast<std::size_t>(written);
    }
    if (::fsync(FDescriptor) != 0 && errno != EINVAL) // EINVAL: a file system that has no sync
        throw WriteError(FPath, errno);
}

void TStagedFile::CopyAttributesOfTarget()
{
    struct stat status { };
    if (::stat(FTarget.constData(), &status) != 0)
        return;
    // Only the superuser may give files away; anybody else writes files of his own anyway.
    [[maybe_unused]] const int ignored = ::fchown(FDescriptor, status.st_uid, status.st_gid);
    ::fchmod(FDescriptor, status.st_mode & 07777);
}

} // namespace Corvadine
