#include "base/StagedFile.h"

#include "base/Files.h"
#include "tests/Testing.h"
#include "tests/TestingSystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Corvadine;
using namespace Corvadine::Testing;

class StagedFilePosixTest : public TFolderTest { };

TEST_F(StagedFilePosixTest, KeepsPermissionsAndFollowsLinks)
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

    ASSERT_TRUE(QFile::setPermissions(Path("real"), QFile::ReadOwner));
    TStagedFile(Path("missing"), "copied", Path("real")).Commit();
    constexpr auto OwnersOwn = QFile::ReadUser | QFile::WriteUser | QFile::ReadOwner | QFile::WriteOwner;
    EXPECT_EQ(QFile::permissions(Path("missing")), OwnersOwn);
}

TEST_F(StagedFilePosixTest, FullDiskLeavesTheOldFileAndNoLitter)
{
    PutFile(Path("a"), "old");
    std::string text;
    {
        const TFileSizeLimit limit(1000);
        text = ErrorOf([&] { WriteFileAtomically(Path("a"), QByteArray(5000, 'x')); });
    }
    EXPECT_EQ(text, "Cannot write " + Path("a").toStdString() + ": File too large");
    EXPECT_EQ(FileBytes(Path("a")), "old");
    EXPECT_EQ(QDir(Path(".")).entryList(QDir::Files | QDir::Hidden), QStringList("a"));
}
