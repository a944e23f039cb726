#include "project/Backups.h"

#include "tests/Testing.h"

#include <QDir>
#include <QFile>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

const QDateTime Noon { QDate(2024, 3, 5), QTime(12, 0, 0) };

QByteArray ProjectWith(const QByteArray& guid, const QByteArray& rest = {})
{
    return "<Project><PropertyGroup><ProjectGuid>{" + guid + "}</ProjectGuid></PropertyGroup>" + rest
        + "</Project>";
}

} // namespace

class BackupsTest : public TFolderTest {
protected:
    BackupsTest()
    {
        QDir().mkdir(FBackups);
        PutFile(FFile, ProjectWith("A", "<Now/>"));
        QFile::setPermissions(FFile, QFile::ReadOwner | QFile::WriteOwner);
    }

    void PutBackup(const QString& name, const QByteArray& bytes) { PutFile(FBackups + "/" + name, bytes); }

    std::string RestoreError(const QString& name) const
    {
        return ErrorOf([&] { RestoreBackup(FFile, FBackups, name, Noon); });
    }

    const QString FFile = Path("Demo.dproj");
    const QString FBackups = Path("Project Backups");
};

TEST_F(BackupsTest, NameKeepsTheFullStopBeforeTheTime)
{
    const QDateTime time(QDate(2024, 3, 5), QTime(14, 7, 9));
    EXPECT_EQ(BackupPath(R"(C:\Dev\Demo.dproj)", "B/", time), "B/Demo.20240305140709.dproj");
    EXPECT_EQ(BackupPath("/x.y/Demo.xml", "B", time),
        QStringLiteral("B") + QDir::separator() + "Dem20240305140709.xml");
    EXPECT_EQ(BackupPath("/x.y/abc", "B/", time), "B/20240305140709");
    EXPECT_EQ(ErrorOf([&] { WriteBackup(FFile, {}, {}, time); }), "No folder for backups was given")
        << "the current folder is none";
}

TEST_F(BackupsTest, ListsTheBackupsOfThisProjectOldestFirst)
{
    PutBackup("Demo.20240305110000.dproj", ProjectWith("a"));
    PutBackup("Demo.20230305110000.dproj", "damaged, so nobody knows whose it is");
    PutBackup("Demo.20240305113000.dproj", ProjectWith("B"));
    for (const char* other : { "Demo.20240305990000.dproj", "Demo.20240305110000.bak",
             "Demo2.20240305110000.dproj", "Demo.20240305110000.20240305110000.dproj" })
        PutBackup(other, ProjectWith("A"));
    const auto listed = ListBackups(FFile, FBackups);
    ASSERT_EQ(listed.size(), 2U);
    EXPECT_EQ(listed[0].Name, "Demo.20230305110000.dproj");
    EXPECT_EQ(listed[1].Time, Noon.addSecs(-3600));
    QFile::remove(FFile);
    EXPECT_EQ(ListBackups(FFile, FBackups).size(), 3U);
}

TEST_F(BackupsTest, ReplacesABackupOfTheSameSecondUnlessItIsAnotherProjects)
{
    const QString other = WriteBackup(Path("b/Demo.dproj"), ProjectWith("B"), FBackups, Noon);
    EXPECT_EQ(WriteBackup(FFile, "damaged", FBackups, Noon.addSecs(1)),
        BackupPath(FFile, FBackups, Noon.addSecs(1)));
    for (const char* rest : { "<First/>", "<Second/>" })
        EXPECT_EQ(WriteBackup(FFile, ProjectWith("A", rest), FBackups, Noon),
            BackupPath(FFile, FBackups, Noon.addSecs(1)));
    EXPECT_EQ(FileBytes(other), ProjectWith("B"));
    EXPECT_EQ(FileBytes(BackupPath(FFile, FBackups, Noon.addSecs(1))), ProjectWith("A", "<Second/>"));
}

TEST_F(BackupsTest, RestoreKeepsTheReplacedFileAndCanBeUndone)
{
    const QByteArray now = FileBytes(FFile);
    const QByteArray old = "\xEF\xBB\xBF" + ProjectWith("A", "<Old/>\r\n");
    PutBackup("Demo.20240305110000.dproj", old);
    PutBackup(QFileInfo(BackupPath(FFile, FBackups, Noon.addSecs(-1))).fileName(), old);

    const auto restored = RestoreBackup(FFile, FBackups, {}, Noon.addSecs(-1));
    EXPECT_EQ(FileBytes(FFile), old);
    EXPECT_EQ(restored.SavedPath, BackupPath(FFile, FBackups, Noon)) << "the second before is taken";
    EXPECT_EQ(FileBytes(restored.SavedPath), now);
    EXPECT_EQ(QFile::permissions(restored.SavedPath), QFile::permissions(FFile));
    RestoreBackup(FFile, FBackups, {}, Noon.addSecs(5));
    EXPECT_EQ(FileBytes(FFile), now);

    PutFile(FFile, "<Project>");
    RestoreBackup(FFile, FBackups, "Demo.20240305110000.dproj", Noon);
    EXPECT_EQ(FileBytes(FFile), old);
    QFile::remove(FFile);
    EXPECT_EQ(RestoreBackup(FFile, FBackups, "Demo.20240305110000.dproj", Noon).SavedPath, "");
    EXPECT_EQ(FileBytes(FFile), old);
}

TEST_F(BackupsTest, RestoreRefusesWhatIsNotABackupOfThisProject)
{
    const std::string cannot = "Cannot restore " + FFile.toStdString() + ": ";
    EXPECT_EQ(RestoreError({}), cannot + "there is no backup of it in " + FBackups.toStdString());
    PutBackup("Demo.20240305110000.dproj", ProjectWith("A"));
    PutBackup("Demo.20240305120000.dproj", ProjectWith("B"));
    PutBackup("Other.20240305110000.dproj", ProjectWith("A"));
    EXPECT_EQ(RestoreError("Demo.20240305120000.dproj"),
        cannot
            + "the backup Demo.20240305120000.dproj belongs to another project (ProjectGuid {B} instead of "
              "{A})");
    for (const char* name : { "Demo.20250305110000.dproj", "Other.20240305110000.dproj", ".." })
        EXPECT_EQ(RestoreError(name), cannot + "it has no backup " + name);
    for (const char* name : { "../Demo.dproj", R"(..\Demo.dproj)", "C:Demo.dproj" })
        EXPECT_EQ(RestoreError(name), cannot + name + " is a path, not the name of a backup");
    EXPECT_EQ(FileBytes(FFile), ProjectWith("A", "<Now/>"));
    EXPECT_EQ(QDir(FBackups).entryList(QDir::Files).size(), 3) << "a refusal makes no backup";

    PutBackup("Demo.20240305130000.dproj", "<Project>");
    EXPECT_THAT(RestoreError("Demo.20240305130000.dproj"),
        ::testing::StartsWith(
            cannot + "the backup Demo.20240305130000.dproj is damaged: it is not well-formed XML, line 1"));
    EXPECT_EQ(RestoreBackup(FFile, FBackups, {}, Noon.addSecs(7200)).BackupPath,
        BackupPath(FFile, FBackups, Noon.addSecs(-3600)))
        << "the newest that is whole";

    QFile::remove(FFile);
    EXPECT_EQ(
        RestoreError({}), cannot + "there are backups of several projects of this name; name the backup");
}
