#include "base/StagedFile.h"

#include "base/Files.h"
#include "tests/Testing.h"

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
