#include "generate/GenerationRun.h"
#include "tests/MainFormTesting.h"
#include "widgets/ThumbnailView.h"

#include <QProgressBar>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::HasSubstr;

class MainFormRunTest : public TMainFormTest { };

TEST_F(MainFormRunTest, GeneratesShowsUpdatesAndClears)
{
    Start({ "A" });
    for (const TField field : { TField::IncAndroid, TField::IncIPhone, TField::IncIPad })
        Table().SetField(field, false);
    Table().SetField(TField::IconImageName, Path("icon.png"));
    Click("Save Changes");
    EXPECT_FALSE(IsEnabled("Update Project"));
    Click("Generate");
    EXPECT_EQ(Names(Ui().MView),
        QStringList({ "UWP_DelphiLogo44.png", "UWP_DelphiLogo150.png", "Icon_MainIcon.ico" }));
    EXPECT_EQ(Ui().PB->value(), 2);
    EXPECT_EQ(QImage(OutputFolder("A") + "/UWP_DelphiLogo44.png").size(), QSize(44, 44))
        << "the blank image: the chosen path was not loaded by the table alone";

    const QByteArray projectBytes = FileBytes(ProjectFile("A"));
    PutFile(ProjectFile("A"), "<Project>");
    Click("Update Project");
    EXPECT_EQ(FPrompts.TakeShown().size(), 1) << "no XML";
    EXPECT_NE(QApplication::overrideCursor(), nullptr) << "stays after a failed update";
    PutFile(ProjectFile("A"), projectBytes);
    QDir backups(Path("program/Project Backups"));
    ASSERT_TRUE(backups.removeRecursively());
    Click("Update Project");
    const QStringList names = backups.entryList(QDir::Files);
    ASSERT_EQ(names.size(), 1) << "the folder is made again";
    EXPECT_EQ(FileBytes(backups.filePath(names.first())), projectBytes);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(FPrompts.TakeShown(),
        QStringList("info: 2 Entries updated, the following entries were not found and need to be set "
                    "manually:\r\n\r\n"
                    "A backup of the project file was made first."));
    EXPECT_THAT(FileBytes(ProjectFile("A")).toStdString(),
        HasSubstr("<UWP_DelphiLogo44>A\\Corvadine\\UWP_DelphiLogo44.png</UWP_DelphiLogo44>"));

    Click("Del All Images");
    EXPECT_EQ(FPrompts.TakeShown(),
        QStringList({ "confirm: This will delete all images in folder " + OutputFolder("A")
                + " Do you wish to proceed?",
            "info: 3 Images Deleted" }));
    EXPECT_EQ(Ui().MView->Count(), 0);
    EXPECT_TRUE(IsEnabled("Update Project")) << "stays as it was";

    QFile::remove(ProjectFile("A"));
    Click("Update Project");
    EXPECT_EQ(FPrompts.TakeShown(), QStringList("error: The Project does not exist!"));
}

TEST_F(MainFormRunTest, RefusesToDeleteOrOverwriteWhatTheUserNeeds)
{
    Start({ "A" });
    const auto setField = [this](TField field, const QString& text) {
        Table().SetField(field, text);
        Click("Save Changes");
    };
    setField(TField::OutputFolder, Path("A/../A"));
    const auto before = FolderContent(Path(""));
    Click("Del All Images");
    EXPECT_EQ(FPrompts.TakeShown(),
        QStringList("error: Cannot delete the files in " + Path("A/../A")
            + ": it is the folder of the project file"));
    setField(TField::OutputFolder, Path("program"));
    Click("Del All Images");
    EXPECT_THAT(FPrompts.TakeShown().join('\n').toStdString(), HasSubstr("it is the program's own folder"));

    const QString source = Path("out/iOS_AppStore1024.png");
    PutFile(source, FileBytes(Path("icon.png")));
    FPrompts.Image = source;
    Click("Icon Image");
    setField(TField::OutputFolder, Path("out"));
    Click("Generate");
    EXPECT_EQ(FPrompts.TakeShown(),
        QStringList("error: Cannot generate " + source + ": this would overwrite the icon image " + source));
    EXPECT_EQ(QDir(Path("out")).entryList(QDir::Files), QStringList("iOS_AppStore1024.png"));
    EXPECT_EQ(FileBytes(source), FileBytes(Path("icon.png")));
    EXPECT_EQ(FileBytes(ProjectFile("A")), before.at("A/A.dproj"));
}

TEST_F(MainFormRunTest, RunKeepsToItsProjectAndClosingEndsIt)
{
    Start({ "B", "A" });
    // Carries out `action` in the middle of the next run.
    const auto during = [this](const std::function<void()>& action) {
        QObject::connect(
            Ui().PB, &QProgressBar::valueChanged, FForm.get(), [action, done = false](int value) mutable {
                if (value == 5 && !std::exchange(done, true))
                    action();
            });
    };
    QDir().mkpath(OutputFolder("B"));
    during([&] {
        EXPECT_FALSE(Ui().dxRibbon1->isEnabled());
        Choose(1);
    });
    Click("Generate");
    EXPECT_EQ(QDir(OutputFolder("A")).entryList(QDir::Files).size(), 38);
    EXPECT_TRUE(QDir(OutputFolder("B")).isEmpty());
    EXPECT_EQ(Ui().MView->Count(), 0);
    EXPECT_FALSE(FForm->State().FilesGenerated) << "the project shown now has no files";

    Choose(2);
    during([&] {
        Choose(1);
        Choose(2);
    });
    Click("Generate");
    EXPECT_TRUE(QTest::qWaitFor([this] { return Ui().MView->Count() == 38; })) << "back before the end";
    EXPECT_TRUE(FForm->State().FilesGenerated);
    EXPECT_EQ(FForm->State().GenList.size(), 38U) << "the Windows icon among them";

    QDir().rmdir(OutputFolder("B"));
    during([&] { Choose(1); });
    Click("Generate");
    EXPECT_EQ(Ui().MView->Count(), 38) << "a missing folder leaves the thumbnails";
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);

    during([this] { EXPECT_FALSE(FForm->close()); });
    Click("Generate");
    EXPECT_FALSE(FForm->isVisible());
    EXPECT_EQ(QDir(OutputFolder("B")).entryList(QDir::Files).size(), 5);
}

TEST_F(MainFormRunTest, RunGivesTheBytesOfTheCommandLine)
{
    Start({ "A" });
    FPrompts.Image = Path("icon.png");
    Click("Icon Image");
    FPrompts.Image = Path("launch.png");
    Click("Launch Image");
    Click("Save Changes");
    Click("Generate");
    TGenJob job = JobOf(Current());
    job.OutputFolder = Path("other");
    std::vector<TGenRec> list;
    for (const TOutput& output : RunGeneration(job))
        list.push_back(output.Record());
    EXPECT_EQ(list, FForm->State().GenList);
    EXPECT_EQ(FolderContent(job.OutputFolder), FolderContent(OutputFolder("A")));
}
