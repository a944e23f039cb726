#include "base/StagedFile.h"

#include "base/Files.h"
#include "tests/Testing.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/resource.h>

using namespace Corvadine;
using namespace Corvadine::Testing;

class StagedFileTest : public TFolderTest { };

TEST_F(StagedFileTest, ChangesNothingUntilCommitted)
{
    PutFile(Path("a"), "old");
    {
        const TStagedFile dropped(Path("a"), "new");
    }
    EXPECT_EQ(FileBytes(Path("a")), "old");
    EXPECT_EQ(QDir(Path(".")).entryList(QDir::Files | QDir::Hidden), QStringList("a")) << "litter is left";

    TStagedFile(Path("a"), "new").Commit();
    EXPECT_EQ(FileBytes(Path("a")), "new");
    EXPECT_EQ(QDir(Path(".")).entryList(QDir::Files | QDir::Hidden), QStringList("a"));
}

TEST_F(StagedFileTest, KeepsPermissionsAndFollowsLinks)
{
    PutFile(Path("real"), "old");
    const auto permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ExeGroup;
    ASSERT_TRUE(QFile::setPermissions(Path("real"), permissions));
    ASSERT_TRUE(QFile::link("real", Path("link"))); // relative, as people make them

    WriteFileAtomically(Path("link"), "new");
    EXPECT_TRUE(QFileInfo(Path("link")).isSymLink());
    EXPECT_EQ(FileBytes(Path("real")), "new");
    EXPECT_EQ(QFile::permissions(Path("real")) & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
        permissions);

    ASSERT_TRUE(QFile::link("missing", Path("dangling")));
    WriteFileAtomically(Path("dangling"), "made");
    EXPECT_EQ(FileBytes(Path("missing")), "made");
}

TEST_F(StagedFileTest, RefusesWhatCannotBeWrittenAndNamesFileAndReason)
{
    PutFile(Path("a"), "old");
    ASSERT_TRUE(QFile::setPermissions(Path("a"), QFile::ReadOwner));
    EXPECT_EQ(ErrorOf([&] { WriteFileAtomically(Path("a"), "new"); }),
        "Cannot write " + Path("a").toStdString() + ": the file is read-only");
    EXPECT_EQ(ErrorOf([&] { WriteFileAtomically(Path("."), "new"); }),
        "Cannot write " + Path(".").toStdString() + ": Is a directory");
    EXPECT_EQ(ErrorOf([&] { WriteFileAtomically(Path("no/a"), "new"); }),
        "Cannot write " + Path("no/a").toStdString() + ": No such file or directory");
    EXPECT_EQ(FileBytes(Path("a")), "old");
}

TEST_F(StagedFileTest, FullDiskLeavesTheOldFileAndNoLitter)
{
    PutFile(Path("a"), "old");
    const rlimit tight { 1000, RLIM_INFINITY };
    rlimit before {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tight), 0);
    const std::string text = ErrorOf([&] { WriteFileAtomically(Path("a"), QByteArray(5000, 'x')); });
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);

    EXPECT_EQ(text, "Cannot write " + Path("a").toStdString() + ": File too large");
    EXPECT_EQ(FileBytes(Path("a")), "old");
    EXPECT_EQ(QDir(Path(".")).entryList(QDir::Files | QDir::Hidden), QStringList("a"));
}
