#include "base/StagedFile.h"

#include "base/Error.h"
#include "base/FileAccessPosix.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>

namespace Corvadine {

namespace {

TError WriteError(const QString& path, int errorNumber)
{
    return { TErrorKind::Io, u"write"_s, path, SystemErrorText({ errorNumber, std::system_category() }) };
}

QByteArray FollowLinks(const QString& path)
{
    const QFileInfo info(path);
    if (info.exists())
        return QFile::encodeName(info.canonicalFilePath());
    constexpr int MostLinks = 40; // a longer chain counts as a circle
    QString target = path;
    for (int links = 0; links < MostLinks && QFileInfo(target).isSymLink(); ++links)
        target = QFileInfo(target).symLinkTarget();
    return QFile::encodeName(target);
}

// A rename over a file needs no permission on that file, so read-only files are refused here. The mode bits
// are checked as well, because access() never refuses the superuser.
void RefuseUnwritableTarget(const QString& path, const QByteArray& target)
{
    struct stat status { };
    if (::stat(target.constData(), &status) != 0)
        return;
    if (S_ISDIR(status.st_mode))
        throw WriteError(path, EISDIR);
    constexpr mode_t AnyoneMayWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    if ((status.st_mode & AnyoneMayWrite) == 0)
        throw TError(TErrorKind::Io, u"write"_s, path, u"the file is read-only"_s);
    if (::access(target.constData(), W_OK) != 0)
        throw WriteError(path, errno);
}

QByteArray FolderPart(const QByteArray& target)
{
    const auto slash = target.lastIndexOf('/');
    return slash < 0 ? QByteArray(".") : target.left(slash + 1);
}

constexpr mode_t NewFileMode = 0666; // narrowed by the umask

// The name of a staged file is TARGET.newPROCESS.COUNT. Its process keeps the file locked. So a file with
// such a name and without a lock was left by a process that was killed. A name without the count may belong
// to a file of the user, such as "Demo.dproj.new2".
const QByteArray StagedMark = ".new";

QByteArray StagedName(const QByteArray& target)
{
    static std::atomic<int> count = 0;
    return target + StagedMark + QByteArray::number(::getpid()) + '.' + QByteArray::number(++count);
}

// Whether `name` is a name of a staged file for `target`.
bool IsStagedName(const QByteArray& name, const QByteArray& target)
{
    const QByteArray start = target + StagedMark;
    if (!name.startsWith(start))
        return false;
    const QList<QByteArray> numbers = name.mid(start.size()).split('.');
    return numbers.size() == 2 && std::all_of(numbers.cbegin(), numbers.cend(), [](const QByteArray& number) {
        return !number.isEmpty() && std::all_of(number.cbegin(), number.cend(), [](char character) {
            return character >= '0' && character <= '9';
        });
    });
}

// Locks the file. Waits while another process holds the lock in RemoveUnlessLocked(). Does nothing on a file
// system without locks. RemoveUnlessLocked() removes nothing there.
void Lock(int descriptor)
{
    while (::flock(descriptor, LOCK_EX) != 0 && errno == EINTR) { }
}

// Whether the open file still has a name. Returns true if the system does not tell.
bool HasName(int descriptor)
{
    struct stat status { };
    return ::fstat(descriptor, &status) != 0 || status.st_nlink > 0;
}

void RemoveUnlessLocked(const QByteArray& file)
{
    const int descriptor = ::open(file.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return;
    struct stat status { };
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)
        && ::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
        ::unlink(file.constData());
    ::close(descriptor);
}

// Returns the files in `folder` that may be staged files.
std::vector<QByteArray> StagedFilesIn(const QByteArray& folder)
{
    std::vector<QByteArray> files;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder.constData(), error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().native().find(StagedMark.constData()) != std::string::npos)
            files.push_back(QByteArray::fromStdString(entry->path().native()));
    return files;
}

// Removes the staged files for `target` that killed processes have left. Each folder is read only once in a
// process, because many files may be written there.
void RemoveAbandoned(const QByteArray& target)
{
    static std::mutex mutex;
    static std::map<QByteArray, std::vector<QByteArray>> found;
    const QByteArray folder = FolderPart(target);
    const std::lock_guard lock(mutex);
    auto files = found.find(folder);
    if (files == found.end())
        files = found.emplace(folder, StagedFilesIn(folder)).first;
    for (const QByteArray& file : files->second)
        if (IsStagedName(file, target))
            RemoveUnlessLocked(file);
}

// Makes the names in a folder survive a loss of power. Failures are ignored, because the files already have
// their names.
void SyncFolder(const QByteArray& folder)
{
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

} // namespace

class TStagedFile::TSystemFile {
public:
    explicit TSystemFile(const QString& path) : FPath(path), FTarget(FollowLinks(path)) { }
    ~TSystemFile();
    Q_DISABLE_COPY_MOVE(TSystemFile)

    void Stage(const QByteArray& bytes, const QString& original);
    // Gives the staged file its final name. With `isNew`, returns false if the name is taken.
    bool PutInPlace(bool isNew);
    QByteArray Folder() const { return FolderPart(FTarget); }

private:
    void Create(mode_t mode);
    bool LinkAs(const QByteArray& name) const;
    void WriteAndSync(const QByteArray& bytes);

    QString FPath;         // as the caller wrote it, for messages
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
    RemoveAbandoned(FTarget);
    // A file that will get the access of another file is first open to its owner alone.
    const bool takesOver = !original.isEmpty() || QFileInfo::exists(QFile::decodeName(FTarget));
    Create(takesOver ? S_IRUSR | S_IWUSR : NewFileMode);
    if (original.isEmpty())
        KeepAccess(FDescriptor, FTarget, FPath);
    else
        CopyAccess(FDescriptor, QFile::encodeName(original), FPath);
    WriteAndSync(bytes);
}

void TStagedFile::TSystemFile::Create(mode_t mode)
{
#ifdef O_TMPFILE
    // A file without a name: a process that is killed now leaves nothing behind.
    FDescriptor = ::open(FolderPart(FTarget).constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
#endif
    // The call fails if the file system does not support files without a name, or if the folder cannot be
    // written. Then the loop below creates a file with a name, or throws the reason.
    if (FDescriptor >= 0) {
        Lock(FDescriptor);
        return;
    }
    do {
        if (FDescriptor >= 0)
            ::close(FDescriptor);
        const QByteArray name = StagedName(FTarget);
        FDescriptor = ::open(name.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode);
        if (FDescriptor < 0)
            throw WriteError(FPath, errno);
        FTemporary = name;
        Lock(FDescriptor);
        // Before we locked the file, another process may have removed it, because it seemed to be abandoned.
    } while (!HasName(FDescriptor));
}

bool TStagedFile::TSystemFile::LinkAs(const QByteArray& name) const
{
    const QByteArray source =
        FTemporary.isEmpty() ? "/proc/self/fd/" + QByteArray::number(FDescriptor) : FTemporary;
    return ::linkat(AT_FDCWD, source.constData(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW) == 0;
}

bool TStagedFile::TSystemFile::PutInPlace(bool isNew)
{
    // linkat() gives a file without a name its final name in one step, so a kill leaves nothing behind.
    // linkat() never replaces a file.
    if (FTemporary.isEmpty() || isNew) {
        if (LinkAs(FTarget))
            return true;
        if (errno != EEXIST)
            throw WriteError(FPath, errno);
        if (isNew)
            return false;
    }
    if (FTemporary.isEmpty()) {
        const QByteArray name = StagedName(FTarget);
        if (!LinkAs(name))
            throw WriteError(FPath, errno);
        FTemporary = name;
    }
    if (::rename(FTemporary.constData(), FTarget.constData()) != 0)
        throw WriteError(FPath, errno);
    FTemporary.clear();
    return true;
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

TStagedFile::TStagedFile(const QString& path, const QByteArray& bytes, const QString& original)
    : FFile(std::make_unique<TSystemFile>(path))
{
    FFile->Stage(bytes, original);
}

TStagedFile::~TStagedFile() = default;
TStagedFile::TStagedFile(TStagedFile&& other) noexcept = default;

void TStagedFile::Commit()
{
    FFile->PutInPlace(false);
    SyncFolder(FFile->Folder());
}

bool TStagedFile::CommitIfNew()
{
    const bool isPlaced = FFile->PutInPlace(true);
    if (isPlaced)
        SyncFolder(FFile->Folder());
    return isPlaced;
}

void TStagedFile::CommitAll(std::vector<TStagedFile>& files)
{
    std::set<QByteArray> folders;
    for (TStagedFile& file : files) {
        file.FFile->PutInPlace(false);
        folders.insert(file.FFile->Folder());
    }
    std::for_each(folders.cbegin(), folders.cend(), SyncFolder);
}

} // namespace Corvadine
