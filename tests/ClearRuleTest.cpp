#include "generate/ClearRule.h"

#include "base/Files.h"
#include "store/Project.h"
#include "tests/Testing.h"
#include "tests/TestingSystem.h"

#include <filesystem>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

void Link(const QString& link, const QString& target)
{
    std::filesystem::create_symlink(target.toStdString(), link.toStdString());
}

} // namespace

// Only judges folders. Deletes nothing.
class ClearRuleTest : public TFolderTest {
protected:
    void SetUp() override
    {
        for (const char* file : { "app/Demo.dproj", "art/icon.png", "art/launch.png", "program/x", "data/x",
                 "art/out/x", "app/Demo/Corvadine/x" })
            PutFile(Path(file), "x");
        FProject.ProjectFile = Path("app/Demo.dproj");
        FProject.IconImageName = Path("art/icon.png");
    }

    // Returns the reason against clearing `folder`, or an empty text if there is none.
    std::string Reason(const QString& folder)
    {
        FProject.OutputFolder = folder;
        if (ClearWarnings(FProject, FOwn).isEmpty()) {
            RefuseToClear(FProject, FOwn);
            return {};
        }
        const std::string text = ErrorOf([this] { RefuseToClear(FProject, FOwn); });
        const std::string start = "Cannot delete the files in " + folder.toStdString() + ": ";
        EXPECT_EQ(text.substr(0, start.size()), start);
        return text.substr(start.size());
    }

    TProject FProject;
    const TOwnFolders FOwn { Path("program"), Path("data") };
};

TEST_F(ClearRuleTest, RefusesFoldersThatAreNeededHoweverTheyAreWritten)
{
    const std::string icon = "it holds the icon image " + Path("art/icon.png").toStdString();
    const QList<std::pair<QString, std::string>> table {
        { QDir::rootPath(), "it is the root of a drive" },
        { QDir::homePath(), "it is the home folder" },
        { Path("program"), "it is the program's own folder" },
        { Path("art/../data/"), "it is the folder of the project database" },
        { Path("data/Project Backups"), "it is the folder of the backups" },
        { Path("program/Project Backups"), "it is the folder of the backups" },
        { Path("app"), "it is the folder of the project file" },
        { Path("app/Demo/../../art/"), icon },
        { Path("app/Demo"), "" },
        { Path("app/Demo/Corvadine"), "" },
        { Path("art/out"), "" },
        { Path(""), "" }, // the folders lie in it, but no file lies directly in it
        { Path("missing"), "" },
        { QString(), "" },
    };
    for (const auto& [folder, reason] : table)
        EXPECT_EQ(Reason(folder), reason) << folder.toStdString();
    EXPECT_EQ(Reason(Path("ART")), IsSameFile(Path("art"), Path("ART")) ? icon : "");

    FProject.SplashImageName = Path("art/launch.png");
    FProject.IconImageName = Path("art/none.png"); // does not exist, so it cannot be lost
    EXPECT_THAT(Reason(Path("art")), HasSubstr("it holds the launch image "));
    FProject.OutputFolder = Path("app");
    EXPECT_THAT(ClearWarnings(FProject, FOwn),
        ElementsAre("The output folder " + Path("app")
            + " can never be cleared: it is the folder of the project file"));
}

TEST_F(ClearRuleTest, FollowsLinks)
{
    if (!IsPosix())
        GTEST_SKIP();
    Link(Path("to-app"), "app");
    EXPECT_EQ(Reason(Path("to-app")), "it is the folder of the project file");
    EXPECT_EQ(Reason("/proc/self/root"), "it is the root of a drive");

    // The project file is a link to a link to a file. The folders of both links and of the file are refused.
    PutFile(Path("real/deep/Demo.dproj"), "x");
    PutFile(Path("middle/x"), "x");
    Link(Path("middle/Demo.dproj"), "../real/deep/Demo.dproj");
    Link(Path("to-middle"), "middle");
    Link(Path("linked.dproj"), "to-middle/Demo.dproj");
    FProject.ProjectFile = Path("linked.dproj");
    for (const char* folder : { "", "middle", "to-middle", "real/deep" })
        EXPECT_EQ(Reason(Path(folder)), "it is the folder of the project file") << folder;
    EXPECT_EQ(Reason(Path("real")), "");

    // The image has two names (a hard link). If one name is deleted, the other is left.
    std::filesystem::create_hard_link(
        Path("art/icon.png").toStdString(), Path("art/out/icon.png").toStdString());
    EXPECT_EQ(Reason(Path("art/out")), "");

    Link(Path("circle"), "circle");
    FProject.ProjectFile = Path("circle");
    EXPECT_EQ(Reason(Path("app")), "");
}
