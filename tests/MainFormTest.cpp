#include "app/ColorBox.h"
#include "app/SettingsFile.h"
#include "images/ImageView.h"
#include "images/ThumbnailView.h"
#include "tests/MainFormTesting.h"

#include <SQLiteCpp/Database.h>

#include <QApplication>
#include <QProgressBar>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::HasSubstr;

class MainFormTest : public TMainFormTest { };

TEST_F(MainFormTest, FirstStartMakesItsFilesAndRestartReopensTheProject)
{
    Start();
    EXPECT_TRUE(QFile::exists(Path("program/Corvadine.db")));
    EXPECT_TRUE(QDir(Path("program/Project Backups")).exists());
    EXPECT_TRUE(FForm->windowTitle().startsWith("FMX Corvadine ("));
    EXPECT_TRUE(IsEnabled("Add Project"));
    for (const char* caption :
        { "Save Changes", "Cancel Changes", "Delete Project", "Generate", "Update Project" })
        EXPECT_FALSE(IsEnabled(caption)) << caption;
    Add("A");
    Add("B");
    EXPECT_EQ(Ui().cbProjects->Text(), ProjectFile("B"));
    FForm.reset();
    EXPECT_EQ(TSettingsFile(Path("program/CorvadineBase.ini")).Text("ProjectFile"), ProjectFile("B"));

    PutFile(Path("program/Corvadine.CAB"), "left over");
    Start();
    EXPECT_EQ(Current().ProjectFile, ProjectFile("B"));
    EXPECT_FALSE(QFile::exists(Path("program/Corvadine.CAB")));
    FForm.reset();
    QFile::remove(ProjectFile("B"));
    Start();
    EXPECT_EQ(Current().ProjectFile, ProjectFile("A")) << "its file is gone";
    EXPECT_EQ(FPrompts.Shown, QStringList());
}

TEST_F(MainFormTest, StandsWhereItStoodWithItsFrame)
{
    Start();
    EXPECT_EQ(FForm->height(), 729) << "no text may make it higher";
    const QRect bounds(10, 0, 1200, 760);
    FForm.reset();
    PutFile(Path("program/CorvadineBase.ini"),
        "[Corvadine]\nWindowsState=0\nScreenLeft=10\nScreenTop=0\nScreenWidth=1200\nScreenHeight=760\n");
    for (int i = 0; i < 2; ++i) { // the second time from what the first has written
        Start();
        EXPECT_EQ(FForm->frameGeometry(), bounds);
        EXPECT_NE(FForm->geometry(), bounds) << "this platform frames its windows";
    }
}

TEST_F(MainFormTest, ImportsTheOlderSettingsOnce)
{
    const QString older = Path("program/Corvadine.ini");
    PutFile(older,
        "\xEF\xBB\xBF[Corvadine]\r\nProjectFile= " + ProjectFile("A").toUtf8()
            + " \r\nBaseImage=C:\\new\\table.png\r\nIncIPad=0\r\nWindowsState=0\r\nScreenLeft=-9000\r\n");
    Start();
    const TProject project = Current();
    EXPECT_EQ(project.ProjectFile, ProjectFile("A"));
    EXPECT_EQ(project.IconImageName, "C:\\new\\table.png");
    EXPECT_TRUE(project.IncAndroid && !project.IncIPad);
    EXPECT_EQ(project.PickColor, -1);
    EXPECT_EQ(project.TwoxSize, 400);
    EXPECT_EQ(project.ResampleFilter, 6);
    EXPECT_FALSE(QFile::exists(older));
    EXPECT_TRUE(QFile::exists(Path("program/CorvadineBase.ini")));
    EXPECT_GE(FForm->x(), 0) << "off every screen";

    PutFile(older, "[Corvadine]\nProjectFile=" + ProjectFile("A").toUtf8());
    Start();
    EXPECT_EQ(FPrompts.TakeShown().size(), 1) << "the same project again is an error";
    EXPECT_TRUE(QFile::exists(older)) << "and is tried again";
    FForm.reset();
    PutFile(older, "[Other]\nProjectFile=x");
    Start();
    EXPECT_EQ(Table().Rows().size(), 1U);
    EXPECT_FALSE(QFile::exists(older));
}

TEST_F(MainFormTest, EditsWaitForSaveAndAMoveDropsThem)
{
    Start({ "A", "B" });
    auto* windows = FForm->findChildren<TFieldCheckBox*>().last();
    QTest::mouseClick(windows, Qt::LeftButton, {}, QPoint(8, windows->height() / 2));
    EXPECT_FALSE(Current().IncWindows);
    EXPECT_TRUE(IsEnabled("Save Changes"));
    EXPECT_FALSE(IsEnabled("Add Project"));
    EXPECT_FALSE(IsEnabled("Generate"));
    Click("Cancel Changes");
    EXPECT_TRUE(windows->isChecked());
    QTest::mouseClick(windows, Qt::LeftButton, {}, QPoint(8, windows->height() / 2));
    Choose(1);
    EXPECT_FALSE(Table().IsEditing());
    Choose(2);
    EXPECT_TRUE(windows->isChecked());

    Add("A");
    EXPECT_THAT(FPrompts.TakeShown().join('\n').toStdString(), HasSubstr("UNIQUE constraint failed"));
    EXPECT_TRUE(IsEnabled("Cancel Changes"));
    Click("Cancel Changes");
    EXPECT_EQ(Ui().cbProjects->Text(), ProjectFile("B"));
}

TEST_F(MainFormTest, DeleteActsOnTheFocusedEditorAfterAQuestion)
{
    Start({ "A" });
    QApplication::setActiveWindow(FForm.get());
    Ui().PB->setFocus();
    EXPECT_FALSE(IsEnabled("Delete Project"));
    Ui().cb2xWidth->setFocus();
    ASSERT_TRUE(IsEnabled("Delete Project"));
    FPrompts.Yes = false;
    Click("Delete Project");
    EXPECT_EQ(Table().Rows().size(), 1U);
    FPrompts.Yes = true;
    Click("Delete Project");
    EXPECT_EQ(Table().Rows().size(), 0U);
    EXPECT_EQ(FPrompts.Shown, QStringList({ "confirm: Delete Project?", "confirm: Delete Project?" }));
    EXPECT_EQ(Ui().cbProjects->Text(), ProjectFile("A")) << "the lookup is not bound to the row";
}

TEST_F(MainFormTest, SwitchingProjectsFollowsTheirFolders)
{
    Start({ "A", "B", "C" });
    for (int i = 0; i < 2; ++i)
        PutFile(OutputFolder("A") + QStringLiteral("/%1.png").arg(i), FileBytes(Path("icon.png")));
    const auto shown = [&] {
        LetIdle();
        return std::pair(Ui().MView->Count(), FForm->State().FilesGenerated);
    };
    Choose(1);
    EXPECT_EQ(shown(), std::pair(2, true));
    EXPECT_EQ(FForm->State().GenList.size(), 37U);
    Choose(2); // its folder does not exist
    EXPECT_EQ(shown(), std::pair(2, true));
    Table().SetField(TField::OutputFolder, QString());
    Table().Post();
    Choose(3);
    Choose(2);
    EXPECT_EQ(shown(), std::pair(0, false));
    Choose(1); // back to the folder that was shown last: nothing is filled
    EXPECT_EQ(shown(), std::pair(0, false));
}

TEST_F(MainFormTest, ChoosesDropsAndRemovesImages)
{
    Start({ "A" });
    FPrompts.Image = Path("icon.png");
    Click("Icon Image");
    EXPECT_EQ(FPrompts.StartFolder, Path("A/")) << "nothing chosen yet: beside the project file";
    EXPECT_EQ(Ui().ImageEnViewIcon->Image().size(), QSize(60, 40));
    EXPECT_EQ(Current().IconImageName, Path("icon.png"));
    EXPECT_TRUE(Table().IsEditing());
    Click("Save Changes");
    Click("Icon Image"); // cancelled
    EXPECT_EQ(FPrompts.StartFolder, Path("") + QDir::separator());
    EXPECT_FALSE(Table().IsEditing());
    QTest::mouseClick(Ui().btnRemoveIcon, Qt::LeftButton);
    EXPECT_TRUE(Ui().ImageEnViewIcon->IsEmpty());
    Click("Cancel Changes");
    EXPECT_EQ(Current().IconImageName, Path("icon.png"));
    EXPECT_TRUE(Ui().ImageEnViewIcon->IsEmpty()) << "shown again with the next change of project";
}

TEST_F(MainFormTest, PicksTheIconsColourFromEitherView)
{
    Start({ "A" });
    TImageView* icon = Ui().ImageEnViewIcon;
    TImageView* launch = Ui().ImageEnViewSplash;
    icon->Load(Path("icon.png"), TDecoderChoice::ByContent);
    launch->Load(Path("launch.png"), TDecoderChoice::ByContent);
    constexpr int IconColor = 0x1E140A;
    const QPoint middle(115, 115);
    const QPoint margin(115, 2); // above a wide image
    const std::tuple<TImageView*, Qt::MouseButton, QPoint, int> cases[] {
        { icon, Qt::RightButton, middle, IconColor },
        { icon, Qt::LeftButton, margin, -1 },
        { launch, Qt::MiddleButton, middle, IconColor },
    };
    for (const auto& [view, button, position, color] : cases) {
        Click("Pick Color");
        EXPECT_EQ(icon->cursor().shape(), Qt::PointingHandCursor);
        QTest::mouseMove(view, position);
        LetIdle();
        EXPECT_EQ(Ui().cbBackground->Value(), color);
        EXPECT_FALSE(Table().IsEditing()) << "previewed, not stored";
        QTest::mouseClick(view, button, {}, position);
        QTest::mouseClick(view, button, {}, position == margin ? middle : margin); // is one too many
        EXPECT_EQ(Current().PickColor, color);
        EXPECT_TRUE(Table().IsEditing());
        EXPECT_FALSE(Button("Pick Color")->isChecked());
        EXPECT_FALSE(icon->testAttribute(Qt::WA_SetCursor)) << "the default cursor again";
        Click("Save Changes");
    }
    Click("Pick Color");
    Click("Pick Color");
    EXPECT_EQ(icon->cursor().shape(), Qt::PointingHandCursor) << "stays when the button is released by hand";
    EXPECT_EQ(FForm->cursor().shape(), Qt::ArrowCursor);
    QTest::mouseMove(launch, margin);
    QTest::mouseClick(launch, Qt::LeftButton, {}, margin);
    EXPECT_EQ(Ui().cbBackground->Value(), IconColor) << "nothing is picked any more";
    icon->Clear();
    Click("Pick Color");
    QTest::mouseClick(launch, Qt::LeftButton, {}, margin);
    EXPECT_EQ(Current().PickColor, 0xFFFFFF) << "the blank pixel of an empty view";
}

TEST_F(MainFormTest, UpdateCheckRunsInTheProgramFolderAndMayEndTheProgram)
{
    const QString before = QDir::currentPath();
    const QString folder = QDir::fromNativeSeparators(Path("program"));
    Start();
    QStringList folders;
    FForm->SetUpdateCheck([&](const QWidget*, const QString& programFolder) {
        folders.append(programFolder);
        return folders.size() == 2;
    });
    Click("Check for Update");
    EXPECT_EQ(QDir::currentPath(), QDir(Path("program")).canonicalPath());
    EXPECT_TRUE(FForm->isVisible());
    Click("Check for Update");
    EXPECT_FALSE(FForm->isVisible()) << "the helper waits";
    EXPECT_EQ(folders, QStringList({ folder, folder }));
    QDir::setCurrent(before);
}

TEST_F(MainFormTest, ComingBackToTheWindowShowsWhatAnotherProgramWrote)
{
    Start();
    Add("A");
    Add("B");
    const auto comeBack = [this] {
        QApplication::setActiveWindow(nullptr);
        QApplication::setActiveWindow(FForm.get());
    };
    TProject project = FForm->tblProjects().Current();
    project.TwoxSize = 123;
    project.IconImageName = Path("icon.png");
    TProjectStore other(Path("program/Corvadine.db"));
    other.Update(project, { TField::TwoxSize, TField::IconImageName });
    {
        SQLite::Database lock(Path("program/Corvadine.db").toStdString(), SQLite::OPEN_READWRITE);
        lock.exec("BEGIN EXCLUSIVE");
        comeBack();
        EXPECT_EQ(FForm->Controls().cb2xWidth->Value(), 400);
    }
    comeBack();
    EXPECT_EQ(FForm->tblProjects().Current().ID, project.ID);
    EXPECT_EQ(FForm->Controls().cb2xWidth->Value(), 123);
    EXPECT_EQ(FForm->Controls().ImageEnViewIcon->Image().size(), QSize(60, 40));

    Add("C");
    other.Delete(FForm->tblProjects().Current());
    comeBack();
    EXPECT_EQ(FForm->tblProjects().Current().ID, project.ID);
    EXPECT_EQ(FForm->Controls().cbProjects->Text(), ProjectFile("B")) << "and no project that is gone";

    // Not under a command: this one would delete the project that has moved up.
    FPrompts.WhileConfirming = [&] {
        other.Delete(project);
        comeBack();
    };
    FForm->Controls().cb2xWidth->setFocus();
    Click("Delete Project");
    EXPECT_EQ(other.ReadProjects().size(), 1U);
    EXPECT_EQ(FForm->tblProjects().Current().ProjectFile, ProjectFile("A"));
    EXPECT_EQ(FPrompts.Shown, QStringList("confirm: Delete Project?"));
}

// Rows of older databases may lack a value.
TEST_F(MainFormTest, RowsWithoutSomeOptionAreShownAsFarAsTheyGo)
{
    QDir().mkpath(Path("out"));
    QFile::copy(Path("icon.png"), Path("out/icon.png"));
    const auto put = [this](const TFieldSet& fields) {
        FForm.reset(); // lets go of the database
        QFile::remove(Path("program/Corvadine.db"));
        TProjectStore(Path("program/Corvadine.db"))
            .Insert({ .ProjectFile = ProjectFile("A"),
                        .IncWindows = true,
                        .TwoxSize = 400,
                        .OutputFolder = Path("out") },
                fields);
    };
    put({ TField::ProjectFile, TField::OutputFolder, TField::IncWindows, TField::TwoxSize });
    Start();
    EXPECT_EQ(FPrompts.TakeShown(), QStringList());
    EXPECT_TRUE(FForm->State().FilesGenerated);
    EXPECT_EQ(FForm->State().GenList.size(), 2U);
    EXPECT_FALSE(IsEnabled("Generate")) << "no background colour";

    put({ TField::ProjectFile, TField::OutputFolder });
    Start();
    EXPECT_EQ(FPrompts.TakeShown(),
        QStringList("error: Cannot use the settings of " + ProjectFile("A")
            + ": the option \"2x Width\" has no value"));
    EXPECT_TRUE(FForm->isVisible());
    EXPECT_EQ(FForm->State().MyIniFileName, QString()) << "the start-up has ended there";
    EXPECT_EQ(FForm->State().BackupFolder, Path("program/Project Backups") + QDir::separator());
    Click("Help"); // there is none, and no harm in it
    EXPECT_EQ(FPrompts.Shown, QStringList());
}

TEST_F(MainFormTest, FailuresShowTheirTextAndRestoreTheWindow)
{
    Start({ "A" });
    PutFile(Path("A/A"), "in the way");
    Click("Generate");
    EXPECT_EQ(FPrompts.TakeShown(), QStringList("error: The Output Folder does not exist!"));
    QFile::remove(Path("A/A"));
    ASSERT_TRUE(QDir().mkpath(OutputFolder("A") + "/Android_LauncherIcon48.png")); // a folder of that name
    Click("Generate");
    EXPECT_THAT(FPrompts.TakeShown().join('\n').toStdString(),
        HasSubstr("Android_LauncherIcon48.png: Is a directory"));
    EXPECT_EQ(Ui().MView->FileNames(), QStringList("Android_LauncherIcon36.png")) << "what was written stays";
    EXPECT_TRUE(Ui().dxRibbon1->isEnabled());
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_FALSE(IsEnabled("Update Project"));

    FForm.reset();
    PutFile(Path("program/Corvadine.db"), "this is no database, but long enough to look at");
    Start();
    EXPECT_EQ(FPrompts.TakeShown().size(), 1);
    EXPECT_TRUE(FForm->isVisible()) << "the window opens all the same";
}
