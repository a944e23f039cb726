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

namespace Corvadine {

namespace {

TError WriteError(const QString& path, int errorNumber)
{
    return { TErrorKind::Io, QStringLiteral("write"), path,
        SystemErrorText({ errorNumber, std::system_category() }) };
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

class TStagedFile::TSystemFile {
public:
    explicit TSystemFile(const QString& path) : FPath(path), FTarget(FollowLinks(path)) { }
    ~TSystemFile();
    Q_DISABLE_COPY_MOVE(TSystemFile)

    void Stage(const QByteArray& bytes, const QString& original);
    void Commit();

private:
    void Create();
    void CopyAttributesOfTarget();
    void CopyAccessOf(const QString& original);
    void WriteAndSync(const QByteArray& bytes);

    QString FPath;         // as the caller named it, for messages
    QByteArray FTarget;    // the file to replace, links followed, in the file system's encoding
    QByteArray FTemporary; // name of the staged file; empty while it has none
    int FDescriptor = -1;
};

TStagedFile::TSystemFile::~TSystemFile()
{
    if (FDescriptor >= 0)
        ::close(FDescriptor);
    if (!FTemporary.isEmpty())
        ::unlink(FTemporary.constData());
}

void TStagedFile::TSystemFile::Stage(const QByteArray& bytes, const QString& original)
{
    RefuseUnwritableTarget(FPath, FTarget);
    Create();
    if (original.isEmpty())
        CopyAttributesOfTarget();
    else
        CopyAccessOf(original);
    WriteAndSync(bytes);
}

void TStagedFile::TSystemFile::Create()
{
#ifdef O_TMPFILE
    // A file without a name: killed now, we leave nothing behind.
    FDescriptor = ::open(FolderPart(FTarget).constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, NewFileMode);
    if (FDescriptor >= 0)
        return;
#endif
    // The file system cannot do that, or the folder is at fault and the next call says so.
    FTemporary = FTarget + ".XXXXXX";
    FDescriptor = ::mkostemp(FTemporary.data(), O_CLOEXEC);
    if (FDescriptor < 0) {
        FTemporary.clear();
        throw WriteError(FPath, errno);
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(FDescriptor, NewFileMode & ~mask);
}

void TStagedFile::TSystemFile::Commit()
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

void TStagedFile::TSystemFile::WriteAndSync(const QByteArray& bytes)
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

void TStagedFile::TSystemFile::CopyAttributesOfTarget()
{
    struct stat status { };
    if (::stat(FTarget.constData(), &status) != 0)
        return;
    // Only the superuser may give files away; anybody else writes files of his own anyway.
    [[maybe_unused]] const int ignored = ::fchown(FDescriptor, status.st_uid, status.st_gid);
    ::fchmod(FDescriptor, status.st_mode & 07777);
}

void TStagedFile::TSystemFile::CopyAccessOf(const QString& original)
{
    mode_t mode = S_IRUSR;
    struct stat status { };
    if (::stat(QFile::encodeName(original).constData(), &status) == 0) {
        mode = status.st_mode & 0777;
        const auto giveTo = [&](uid_t owner) { return ::fchown(FDescriptor, owner, status.st_gid) == 0; };
        constexpr auto SameOwner = static_cast<uid_t>(-1);
        if (!giveTo(status.st_uid) && !giveTo(SameOwner)) // our group are others to the original
            mode = (mode & ~mode_t { S_IRWXG }) | (mode & S_IRWXO) << 3;
    }
    if (::fchmod(FDescriptor, mode | S_IWUSR) != 0)
        throw WriteError(FPath, errno);
}

TStagedFile::TStagedFile(const QString& path, const QByteArray& bytes, const QString& original)
    : FFile(std::make_unique<TSystemFile>(path))
{
    FFile->Stage(bytes, original);
}

TStagedFile::~TStagedFile() = default;
TStagedFile::TStagedFile(TStagedFile&& other) noexcept = default;

void TStagedFile::Commit()
{
    FFile->Commit();
}

} // namespace Corvadine
