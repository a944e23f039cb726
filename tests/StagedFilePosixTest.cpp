#include "base/StagedFile.h"

#include "base/Files.h"
#include "tests/Testing.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <functional>
#include <utility>

using namespace Corvadine;
using namespace Corvadine::Testing;

// The functions below replace the system's functions of the same names, so that a test can make them fail.
static int FSyncError = 0;               // errno of the next calls of fsync(); 0: they succeed
static int FChownError = 0;              // errno of the next calls of fchown(); 0: they succeed
static bool HasNamelessFiles = true;     // false: open() refuses O_TMPFILE
static std::function<void()> BeforeLock; // called by the next call of flock()

extern "C" int fsync(int descriptor) // NOLINT(*-naming)
{
    errno = FSyncError;
    return FSyncError != 0 ? -1 : ::fdatasync(descriptor);
}

extern "C" int fchown(int descriptor, uid_t owner, gid_t group) noexcept // NOLINT(*-naming)
{
    errno = FChownError;
    return FChownError != 0 ? -1 : ::fchownat(descriptor, "", owner, group, AT_EMPTY_PATH);
}

extern "C" int open(const char* path, int flags, ...) // NOLINT(*-naming, cert-dcl50-cpp)
{
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    errno = EOPNOTSUPP;
    return (flags & O_TMPFILE) == O_TMPFILE && !HasNamelessFiles ? -1 : ::openat(AT_FDCWD, path, flags, mode);
}

extern "C" int flock(int descriptor, int operation) noexcept // NOLINT(*-naming)
{
    if (const auto before = std::exchange(BeforeLock, {}))
        before();
    return static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}

namespace {

const char* const AccessList = "system.posix_acl_access";
const char* const DefaultList = "system.posix_acl_default";

// Returns an access control list as Linux stores it (the kernel's posix_acl_xattr.h). The owner may read and
// write. User 4242 may read. The group may do nothing. The mask is r--.
QByteArray ListWithNamedUser()
{
    const auto entry = [](int tag, int rights, quint32 id) {
        return QByteArray::fromRawData("", 0) + char(tag) + '\0' + char(rights) + '\0'
            + QByteArray(reinterpret_cast<const char*>(&id), sizeof(id));
    };
    constexpr quint32 NoID = 0xFFFFFFFF;
    return QByteArray("\2\0\0\0", 4) + entry(0x01, 6, NoID) + entry(0x02, 4, 4242) + entry(0x04, 0, NoID)
        + entry(0x10, 4, NoID) + entry(0x20, 0, NoID);
}

bool SetAttribute(const QString& path, const char* name, const QByteArray& value)
{
    return ::setxattr(QFile::encodeName(path).constData(), name, value.constData(),
               static_cast<std::size_t>(value.size()), 0)
        == 0;
}

// Returns the value of the attribute `name`, or an empty value if the file has no such attribute.
QByteArray Attribute(const QString& path, const char* name)
{
    char buffer[256];
    const auto size = ::getxattr(QFile::encodeName(path).constData(), name, buffer, sizeof(buffer));
    return size < 0 ? QByteArray() : QByteArray(buffer, size);
}

} // namespace

class StagedFilePosixTest : public TFolderTest {
protected:
    StagedFilePosixTest()
    {
        FSyncError = FChownError = 0;
        HasNamelessFiles = true;
    }

    unsigned ModeOf(const char* name) const
    {
        struct stat status { };
        EXPECT_EQ(::stat(QFile::encodeName(Path(name)), &status), 0);
        return status.st_mode & 07777U;
    }

    // Returns the mode of a copy of a file that has the mode `original`.
    unsigned ModeOfCopy(unsigned original) const
    {
        PutFile(Path("original"), "");
        EXPECT_EQ(::chmod(QFile::encodeName(Path("original")), original), 0);
        TStagedFile(Path("copy"), "copied", Path("original")).Commit();
        return ModeOf("copy");
    }
};

TEST_F(StagedFilePosixTest, KeepsPermissionsAndFollowsLinks)
{
    PutFile(Path("real"), "old");
    const auto permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ExeGroup;
    ASSERT_TRUE(QFile::setPermissions(Path("real"), permissions));
    ASSERT_TRUE(QFile::link("real", Path("link")));

    WriteFileAtomically(Path("link"), "new");
    EXPECT_TRUE(QFileInfo(Path("link")).isSymLink());
    EXPECT_EQ(FileBytes(Path("real")), "new");
    EXPECT_EQ(QFile::permissions(Path("real")) & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
        permissions);

    ASSERT_TRUE(QFile::link("missing", Path("dangling")));
    ASSERT_TRUE(QFile::link("dangling", Path("twice")));
    WriteFileAtomically(Path("twice"), "made");
    EXPECT_EQ(FileBytes(Path("missing")), "made");
    EXPECT_TRUE(QFileInfo(Path("dangling")).isSymLink());
}

TEST_F(StagedFilePosixTest, ACopyIsOpenToNoMoreUsersThanItsOriginal)
{
    EXPECT_EQ(ModeOfCopy(0400), 0600U);
    EXPECT_EQ(ModeOfCopy(0674), 0674U);
    FChownError = EPERM; // the copy gets our group, and the original gives this group the rights of others
    EXPECT_EQ(ModeOfCopy(0674), 0644U);
    EXPECT_EQ(ModeOfCopy(0660), 0600U);
    FChownError = 0;
    TStagedFile(Path("orphan"), "copied", Path("gone")).Commit();
    EXPECT_EQ(
        QFile::permissions(Path("orphan")) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST_F(StagedFilePosixTest, AFailedSyncChangesNothing)
{
    PutFile(Path("a"), "old");
    FSyncError = EIO;
    EXPECT_EQ(ErrorOf([&] { WriteFileAtomically(Path("a"), "new"); }),
        "Cannot write " + Path("a").toStdString() + ": Input/output error");
    EXPECT_EQ(FileBytes(Path("a")), "old");
    FSyncError = EINVAL; // the file system cannot sync
    WriteFileAtomically(Path("a"), "new");
    EXPECT_EQ(FileBytes(Path("a")), "new");
}

TEST_F(StagedFilePosixTest, KeepsAccessControlListsAndOtherExtendedAttributes)
{
    PutFile(Path("a"), "old");
    PutFile(Path("plain"), "old");
    if (!SetAttribute(Path("a"), AccessList, ListWithNamedUser())
        || !SetAttribute(Path("a"), "user.note", "kept"))
        GTEST_SKIP() << "this file system has no extended attributes";
    WriteFileAtomically(Path("a"), "new");
    EXPECT_EQ(FileBytes(Path("a")), "new");
    EXPECT_EQ(Attribute(Path("a"), AccessList), ListWithNamedUser());
    EXPECT_EQ(Attribute(Path("a"), "user.note"), "kept");

    // The bits of the group in the original's mode are the mask of its access control list. In a copy these
    // bits must not become the rights of the group.
    TStagedFile(Path("copy"), "new", Path("a")).Commit();
    EXPECT_EQ(Attribute(Path("copy"), AccessList), ListWithNamedUser());

    // New files get the folder's default list. A replaced file and a copy must not get this list, because the
    // old file did not have it.
    ASSERT_TRUE(SetAttribute(Path("."), DefaultList, ListWithNamedUser()));
    ASSERT_EQ(::chmod(QFile::encodeName(Path("plain")).constData(), 0640), 0);
    WriteFileAtomically(Path("plain"), "new");
    TStagedFile(Path("copy of plain"), "new", Path("plain")).Commit();
    for (const char* name : { "plain", "copy of plain" }) {
        EXPECT_EQ(Attribute(Path(name), AccessList), "") << name;
        EXPECT_EQ(ModeOf(name), 0640U) << name;
    }
}

TEST_F(StagedFilePosixTest, RemovesWhatKilledProcessesLeftForTheSameFile)
{
    PutFile(Path("a"), "old");
    for (const char* name : { "a.new4194305.7", "a.new2", "a.newer", "a.new5.6 of mine", "b.new4194305.7" })
        PutFile(Path(name), "left");
    PutFile(Path("a.new77.1"), "being staged by a living process");
    const int living = ::open(QFile::encodeName(Path("a.new77.1")).constData(), O_RDONLY);
    ASSERT_EQ(::flock(living, LOCK_EX), 0);
    WriteFileAtomically(Path("a"), "new");
    ::close(living);
    EXPECT_EQ(QDir(Path(".")).entryList(QDir::Files, QDir::Name),
        QStringList({ "a", "a.new2", "a.new5.6 of mine", "a.new77.1", "a.newer", "b.new4194305.7" }));
}

TEST_F(StagedFilePosixTest, StagesAgainIfAnotherProcessRemovesTheFileBeforeItIsLocked)
{
    HasNamelessFiles = false;
    BeforeLock = [this] {
        const QStringList staged = QDir(Path(".")).entryList({ "a.new*" }, QDir::Files);
        ASSERT_EQ(staged.size(), 1);
        QFile::remove(Path(staged.first()));
    };
    WriteFileAtomically(Path("a"), "new");
    EXPECT_FALSE(BeforeLock);
    EXPECT_EQ(FileBytes(Path("a")), "new");
    EXPECT_EQ(QDir(Path(".")).entryList(QDir::Files), QStringList("a"));
}
