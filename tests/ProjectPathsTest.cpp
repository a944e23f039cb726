#include "project/ProjectPaths.h"

#include "base/PathRules.h"
#include "tests/Testing.h"

using namespace Corvadine;

TEST(ProjectPathsTest, RelativeFolderIsTheSameRuleOnEverySystem)
{
    const char* const cases[][3] = {
        { R"(C:\Dev\Demo\Demo.dproj)", R"(C:\Dev\Demo\Images)", R"(Images\)" },
        { R"(C:\Dev\Demo\Demo.dproj)", R"(C:\Dev\Demo)", "" },
        { R"(C:\Dev\Demo\Demo.dproj)", R"(C:\Dev\Art\Demo)", R"(..\Art\Demo\)" },
        { R"(C:\Dev\Demo\Demo.dproj)", R"(D:\Art)", R"(D:\Art\)" },
        { R"(C:/Dev/Demo/Demo.dproj)", R"(c:\dev\DEMO\Images\)", R"(Images\)" },
        { R"(\\server\share\Demo.dproj)", R"(\\server\other\Art)", R"(\\server\other\Art\)" },
        { R"(\\server\share\a\Demo.dproj)", R"(\\SERVER\share\Art)", R"(..\Art\)" },
        { "/home/u/Demo/Demo.dproj", "/home/u/Demo2", R"(..\Demo2\)" },
        { "/Demo.dproj", "/", "" },
        { "/home/u/Demo/Demo.dproj", "/mnt/Größe & Co", R"(..\..\..\mnt\Größe & Co\)" },
    };
    for (const auto& [projectFile, outputFolder, expected] : cases)
        EXPECT_EQ(RelativeFolder(projectFile, outputFolder).toStdString(), expected)
            << projectFile << " to " << outputFolder;
}

TEST(ProjectPathsTest, PartsOfPathsAreTheSameOnEverySystem)
{
    const struct {
        const char *Path, *Folder, *Name, *Extension;
        bool IsFull;
    } cases[] = {
        { R"(C:\Dev\Demo.v2.DProj)", R"(C:\Dev\)", "Demo.v2.DProj", ".DProj", true },
        { R"(C:/Dev.old\Demo)", R"(C:/Dev.old\)", "Demo", "", true },
        { "C:Demo.dproj", "C:", "Demo.dproj", ".dproj", false },
        { R"(\\server\share\a.b)", R"(\\server\share\)", "a.b", ".b", true },
        { "/home/Größe/.dproj", "/home/Größe/", ".dproj", ".dproj", true },
        { "no:drive/a", "no:drive/", "a", "", false },
        { "C:", "C:", "", "", false },
        { "", "", "", "", false },
    };
    for (const auto& [path, folder, name, extension, isFull] : cases) {
        EXPECT_EQ(FolderOf(path).toStdString(), folder) << path;
        EXPECT_EQ(FileNameOf(path).toStdString(), name) << path;
        EXPECT_EQ(ExtensionOf(path).toStdString(), extension) << path;
        EXPECT_EQ(IsFullPath(path), isFull) << path;
    }
}

TEST(ProjectPathsTest, NewProjectsGetAFolderNamedAfterThem)
{
    EXPECT_EQ(DeriveOutputFolder(R"(C:\Dev\Demo\Demo.dproj)"), R"(C:\Dev\Demo\Demo\Corvadine)");
    EXPECT_EQ(DeriveOutputFolder("/home/u/Demo.v2.DProj"), "/home/u/Demo.v2/Corvadine");
    EXPECT_EQ(DeriveOutputFolder("/home/u/.dproj"), "/home/u/Corvadine") << "no second delimiter";
}
