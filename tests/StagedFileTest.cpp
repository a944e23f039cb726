#include "base/StagedFile.h"

#include "base/Files.h"
#include "tests/Testing.h"

#include <QDir>
#include <QFile>

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

TEST_F(StagedFileTest, ReplacesNothingWhenTheFileMustBeNew)
{
    TStagedFile first(Path("a"), "first");
    TStagedFile second(Path("a"), "second");
    EXPECT_TRUE(first.CommitIfNew());
    EXPECT_FALSE(second.CommitIfNew());
    EXPECT_EQ(FileBytes(Path("a")), "first");
    second.Commit();
    EXPECT_EQ(FileBytes(Path("a")), "second");
}

TEST_F(StagedFileTest, RefusesWhatCannotBeWrittenAndNamesFileAndReason)
{
    PutFile(Path("a"), "old");
    ASSERT_TRUE(QFile::setPermissions(Path("a"), QFile::ReadOwner));
    EXPECT_EQ(ErrorOf([&] { WriteFileAtomically(Path("a"), "new"); }),
        "Cannot write " + Path("a").toStdString() + ": the file is read-only");
    EXPECT_EQ(ErrorOf([&] { WriteFileAtomically(Path("."), "new"); }),
        "Cannot write " + Path(".").toStdString() + ": Is a directory");
    EXPECT_THAT(ErrorOf([&] { WriteFileAtomically(Path("no/a"), "new"); }), // the system gives the reason
        Matches(R"(Cannot write .*no.a: .*[a-z])"));
    EXPECT_EQ(FileBytes(Path("a")), "old");
}

TEST(NewFolderTest, LeavesNothingOfAFolderThatCannotBeMade)
{
    const QTemporaryDir folder;
    const QString deepest = folder.filePath("a/b/") + QString(300, u'n');
    EXPECT_THAT(ErrorOf([&] { TNewFolder { deepest }; }), ::testing::HasSubstr("Cannot create the folder"));
    EXPECT_FALSE(QFile::exists(folder.filePath("a")));
}
