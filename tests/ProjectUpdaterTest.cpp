#include "project/ProjectUpdater.h"

#include "base/Files.h"
#include "store/ProjectStore.h"
#include "tests/Testing.h"
#include "tests/TestingSystem.h"

#include <QFile>

#include <random>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

// Returns a project file whose paths lead into `folder`.
QByteArray ProjectWith(const char* folder)
{
    return QByteArray("\xEF\xBB\xBF<Project>\r\n"
                      "<PropertyGroup><Icon>@\\icon.ico</Icon><Logo>@\\logo.png</Logo></PropertyGroup>\r\n"
                      "<PropertyGroup><Logo>@\\logo.png</Logo></PropertyGroup>\r\n"
                      "</Project>\r\n")
        .replace("@", folder);
}

} // namespace

class ProjectUpdaterTest : public TFolderTest {
protected:
    ProjectUpdaterTest()
    {
        const TProjectStore made(Path("Corvadine.db"));
        PutFile(FFile, FOriginal);
        for (const char* image :
            { "Red/logo.png", "Red/icon.ico", "Red/extra.png", "Blue/logo.png", "Blue/icon.ico" })
            PutFile(Path(image), "image");
    }

    const QByteArray FOriginal = ProjectWith("Old");
    const QByteArray FRed = ProjectWith("Red");
    const QString FFile = Path("Demo.dproj");
    TProjectImages FImages { FFile, Path("Red"),
        { { "Logo", "logo.png" }, { "Missing", "missing.png" }, { "Icon", "icon.ico" } } };
    const QString FFolder = Path("Backups");
    TBackups FBackups { FFolder, Path("Corvadine.db") };
    TBackupOrder FBackup { FBackups, QDateTime({ 2024, 3, 5 }, { 12, 0, 0 }) };
};

TEST_F(ProjectUpdaterTest, SetsEveryElementWhoseImageExists)
{
    const auto plan = PlanUpdate(FImages, TImageFiles::Existing);
    EXPECT_EQ(FileBytes(FFile), FOriginal);
    EXPECT_FALSE(FolderExists(FFolder));
    ASSERT_EQ(plan.Changes.size(), 3U);
    EXPECT_EQ(plan.Changes[2].OldText, "Old\\icon.ico");
    EXPECT_EQ(plan.Changes[2].NewText, "Red\\icon.ico");
    EXPECT_EQ(PlanUpdate(FImages, TImageFiles::Assumed).MissingIDs, QStringList("Missing"));

    const auto result = UpdateProject(FImages, FBackup);
    EXPECT_EQ(FileBytes(FFile), FRed);
    EXPECT_EQ(result.BackupPath, Path("Backups/Demo.20240305120000.dproj"));
    EXPECT_EQ(FileBytes(result.BackupPath), FOriginal);
    EXPECT_EQ(result.ClosingMessage(), "3 Entries updated.\r\nA backup of the project file was made first.");

    QFile::setPermissions(FFile, QFile::ReadOwner);     // any write would be refused
    FImages.Images.push_back({ "Extra", "extra.png" }); // no such element
    EXPECT_EQ(UpdateProject(FImages, FBackup).BackupPath, "") << "of an update that changes nothing";
    EXPECT_EQ(FileBytes(result.BackupPath), FOriginal);
    FBackup.Policy = TBackupPolicy::BestEffort;
    const auto second = UpdateProject(FImages, FBackup);
    EXPECT_FALSE(second.IsWritten);
    EXPECT_EQ(FileBytes(second.BackupPath), FRed) << "replaces the backup of the same second";
    EXPECT_EQ(second.ClosingMessage(),
        "3 Entries updated, the following entries were not found and need to be set manually:\r\n"
        "\r\nA backup of the project file was made first.");
}

TEST_F(ProjectUpdaterTest, FailuresLeaveTheProjectFileAsItWas)
{
    const auto error = [&] { return ErrorOf([&] { UpdateProject(FImages, FBackup); }); };
    const std::string file = FFile.toStdString();

    PutFile(FFolder, "a file in the way");
    EXPECT_EQ(error(),
        "Cannot back up " + file + ": Cannot create the folder " + FFolder.toStdString()
            + ": a file of that name is in the way; the project file is unchanged");
    EXPECT_EQ(FileBytes(FFile), FOriginal);

    FBackup.Policy = TBackupPolicy::BestEffort;
    EXPECT_EQ(UpdateProject(FImages, FBackup).BackupPath, "");
    EXPECT_EQ(FileBytes(FFile), FRed);

    QFile::remove(FFolder);
    TBackups unrecorded(FFolder, Path("missing.db"));
    const TBackupOrder order { unrecorded, FBackup.Time, TBackupPolicy::BestEffort };
    EXPECT_EQ(FileBytes(UpdateProject(FImages, order).BackupPath), FRed) << "better than none";

    PutFile(FFile, "<Project>");
    EXPECT_THAT(error(), ::testing::HasSubstr("line 1"));
    EXPECT_EQ(FileBytes(FFile), "<Project>");
    FImages.OutputFolder.clear();
    EXPECT_EQ(error(), "Cannot update " + file + ": the project has no output folder");
    FImages.ProjectFile = Path("."); // a folder is no project
    EXPECT_EQ(error(), "The Project does not exist!");
}

TEST_F(ProjectUpdaterTest, KilledAtAnyMomentLeavesOneOfTheTwoWholes)
{
    if (!IsPosix())
        GTEST_SKIP();
    std::mt19937 random(20240305);
    std::uniform_int_distribution pause(500, 120'000);
    const QByteArray blue = ProjectWith("Blue");
    int changed = 0;
    for (int round = 0; round < 25; ++round) {
        PutFile(FFile, FRed);
        const auto updateForever = [this] {
            for (bool isBlue = true;; isBlue = !isBlue) {
                FImages.OutputFolder = Path(isBlue ? "Blue" : "Red");
                UpdateProject(FImages, FBackup);
            }
        };
        RunAndKill(updateForever, std::chrono::microseconds(pause(random)));
        const QByteArray found = FileBytes(FFile);
        ASSERT_TRUE(found == FRed || found == blue) << found.toStdString();
        changed += found == blue ? 1 : 0;
    }
    EXPECT_GT(changed, 0) << "the child never got to work";
}
