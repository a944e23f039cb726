#include "project/ProjectUpdater.h"

#include "base/Files.h"
#include "tests/Testing.h"
#include "tests/TestingSystem.h"

#include <QFile>

#include <random>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

QByteArray ProjectWith(const char* icon, const char* launcher)
{
    return QByteArray("\xEF\xBB\xBF<Project>\r\n"
                      "<PropertyGroup><Icon_MainIcon>ICON</Icon_MainIcon></PropertyGroup>\r\n"
                      "<PropertyGroup><Android_LauncherIcon36>36</Android_LauncherIcon36></PropertyGroup>\r\n"
                      "<PropertyGroup><Android_LauncherIcon36>36</Android_LauncherIcon36></PropertyGroup>\r\n"
                      "</Project>\r\n")
        .replace(">ICON<", QByteArray(">") + icon + '<')
        .replace(">36<", QByteArray(">") + launcher + '<');
}

const QByteArray Original = ProjectWith("$(BDS)\\x.ico", "$(BDS)\\36.png");
const QByteArray Red = ProjectWith("Red\\Icon_MainIcon.ico", "Red\\Android_LauncherIcon36.png");
const QByteArray Blue = ProjectWith("Blue\\Icon_MainIcon.ico", "Blue\\Android_LauncherIcon36.png");
const QDateTime Noon { QDate(2024, 3, 5), QTime(12, 0, 0) };

} // namespace

class ProjectUpdaterTest : public TFolderTest {
protected:
    ProjectUpdaterTest()
    {
        PutFile(FImages.ProjectFile, Original);
        for (const char* folder : { "Red", "Blue" })
            for (const char* image :
                { "Android_LauncherIcon36.png", "Icon_MainIcon.ico", "UWP_DelphiLogo44.png" })
                PutFile(Path(folder) + "/" + image, "image");
    }

    TProjectImages FImages { Path("Demo.dproj"), Path("Red"),
        { "Android_LauncherIcon36", "Android_LauncherIcon48", "Icon_MainIcon" } };
    TBackupOrder FBackup { Path("Backups"), Noon, TBackupPolicy::Required };
};

TEST_F(ProjectUpdaterTest, SetsEveryElementWhoseImageExists)
{
    const auto plan = PlanUpdate(FImages, TImageFiles::Existing);
    EXPECT_EQ(FileBytes(FImages.ProjectFile), Original);
    EXPECT_FALSE(FolderExists(FBackup.Folder));
    ASSERT_EQ(plan.Changes.size(), 3U);
    EXPECT_EQ(plan.Changes[2].OldText, "$(BDS)\\x.ico");
    EXPECT_EQ(plan.Changes[2].NewText, "Red\\Icon_MainIcon.ico");
    EXPECT_EQ(PlanUpdate(FImages, TImageFiles::Assumed).MissingIDs, QStringList("Android_LauncherIcon48"));

    const auto result = UpdateProject(FImages, FBackup);
    EXPECT_EQ(FileBytes(FImages.ProjectFile), Red);
    EXPECT_EQ(result.BackupPath, Path("Backups/Demo.20240305120000.dproj"));
    EXPECT_EQ(FileBytes(result.BackupPath), Original);
    EXPECT_EQ(result.ClosingMessage(), "3 Entries updated.\r\nA backup of the project file was made first.");

    QFile::setPermissions(FImages.ProjectFile, QFile::ReadOwner); // any write would be refused
    FImages.IDs.append("UWP_DelphiLogo44");                       // its image is there, its element is not
    EXPECT_EQ(UpdateProject(FImages, FBackup).BackupPath, "") << "of an update that changes nothing";
    EXPECT_EQ(FileBytes(result.BackupPath), Original);
    FBackup.Policy = TBackupPolicy::BestEffort;
    const auto second = UpdateProject(FImages, FBackup);
    EXPECT_FALSE(second.IsWritten);
    EXPECT_EQ(FileBytes(second.BackupPath), Red) << "replaces the backup of the same second";
    EXPECT_EQ(second.ClosingMessage(),
        "3 Entries updated, the following entries were not found and need to be set manually:\r\n"
        "\r\nA backup of the project file was made first.");
}

TEST_F(ProjectUpdaterTest, BackupThatFailsStopsOnlyWhereItIsRequired)
{
    PutFile(Path("Backups"), "a file in the way");
    EXPECT_EQ(ErrorOf([&] { UpdateProject(FImages, FBackup); }),
        "Cannot back up " + FImages.ProjectFile.toStdString() + ": Cannot create the folder "
            + FBackup.Folder.toStdString()
            + ": a file of that name is in the way; the project file is unchanged");
    EXPECT_EQ(FileBytes(FImages.ProjectFile), Original);

    FBackup.Policy = TBackupPolicy::BestEffort;
    EXPECT_EQ(UpdateProject(FImages, FBackup).BackupPath, "");
    EXPECT_EQ(FileBytes(FImages.ProjectFile), Red);
}

TEST_F(ProjectUpdaterTest, FailuresLeaveTheProjectFileAsItWas)
{
    const auto error = [&] { return ErrorOf([&] { UpdateProject(FImages, FBackup); }); };
    const std::string file = FImages.ProjectFile.toStdString();

    EXPECT_EQ(ErrorOf([&] { SaveProjectFile(FImages.ProjectFile, "what we read", "ours"); }),
        "Cannot save the project file " + file + ": another program has changed it meanwhile");
    EXPECT_EQ(FileBytes(FImages.ProjectFile), Original);

    PutFile(FImages.ProjectFile, "<Project>");
    EXPECT_THAT(error(), ::testing::HasSubstr("line 1"));
    EXPECT_EQ(FileBytes(FImages.ProjectFile), "<Project>");

    FImages.ProjectFile = Path("."); // a folder is no project
    EXPECT_EQ(error(), "The Project does not exist!");
}

TEST_F(ProjectUpdaterTest, KilledAtAnyMomentLeavesOneOfTheTwoWholes)
{
    if (!IsPosix())
        GTEST_SKIP();
    std::mt19937 random(20240305);
    std::uniform_int_distribution pause(500, 20'000);
    int changed = 0;
    for (int round = 0; round < 40; ++round) {
        PutFile(FImages.ProjectFile, Red);
        const auto updateForever = [this] {
            for (int run = 0;; ++run) {
                FImages.OutputFolder = Path(run % 2 == 0 ? "Blue" : "Red");
                UpdateProject(FImages, FBackup);
            }
        };
        RunAndKill(updateForever, std::chrono::microseconds(pause(random)));
        const QByteArray found = FileBytes(FImages.ProjectFile);
        ASSERT_TRUE(found == Red || found == Blue) << found.toStdString();
        changed += found == Blue ? 1 : 0;
    }
    EXPECT_GT(changed, 0) << "the child never got to work";
}
