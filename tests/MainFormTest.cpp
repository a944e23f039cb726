#include "app/MainFrm.h"

#include "app/ColorBox.h"
#include "app/FieldEditors.h"
#include "app/ProjectLookup.h"
#include "app/Ribbon.h"
#include "app/SettingsFile.h"
#include "dialogs/Prompts.h"
#include "generate/GenerationRun.h"
#include "images/ImageView.h"
#include "images/ThumbnailView.h"
#include "project/ProjectPaths.h"
#include "tests/DialogTesting.h"

#include <SQLiteCpp/Database.h>

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QProgressBar>
#include <QTest>
#include <QToolButton>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::HasSubstr;

namespace {

// Answers in place of the user, and remembers what was shown.
class TScriptedPrompts : public TPrompts {
public:
    void ShowError(const QString& text) override { Shown.append("error: " + text); }
    void Inform(const QString& text) override { Shown.append("info: " + text); }
    bool Confirm(const QString& text) override
    {
        Shown.append("confirm: " + text);
        if (WhileConfirming)
            WhileConfirming();
        return Yes;
    }
    std::optional<QString> ChooseProjectFile() override { return std::exchange(ProjectFile, std::nullopt); }
    std::optional<QString> ChooseImage(const QString& startFolder) override
    {
        StartFolder = startFolder;
        return std::exchange(Image, std::nullopt);
    }

    QStringList TakeShown() { return std::exchange(Shown, {}); }

    bool Yes = true;
    std::function<void()> WhileConfirming;
    std::optional<QString> ProjectFile;
    std::optional<QString> Image;
    QString StartFolder;
    QStringList Shown;
};

} // namespace

class MainFormTest : public TFolderTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir().mkpath(Path("program")));
        for (const char* name : { "A", "B", "C" })
            PutFile(ProjectFile(name),
                "<Project><PropertyGroup><ProjectGuid>{1}</ProjectGuid><UWP_DelphiLogo44/>"
                "<UWP_DelphiLogo150>x</UWP_DelphiLogo150></PropertyGroup></Project>");
        QImage icon(60, 40, QImage::Format_ARGB32);
        icon.fill(qRgba(10, 20, 30, 255));
        ASSERT_TRUE(icon.save(Path("icon.png")));
        icon.fill(qRgb(200, 0, 0));
        ASSERT_TRUE(icon.save(Path("launch.png")));
    }

    QString ProjectFile(const QString& name) const { return Path(name + "/" + name + ".dproj"); }

    // Starts the program, or restarts it, and adds projects.
    void Start(const QStringList& projects = {})
    {
        FForm.reset();
        FForm = std::make_unique<TMainForm>(Path("program"), FPrompts);
        FForm->StartUp();
        FForm->show();
        LetIdle();
        for (const QString& name : projects)
            Add(name);
    }

    const TMainControls& Ui() const { return FForm->Controls(); }
    TProjectsTable& Table() const { return FForm->tblProjects(); }
    TProject Current() const { return Table().Current(); }
    // As a user does in the lookup.
    void Choose(qint64 id) const { Ui().cbProjects->SetValue(id); }

    QToolButton* Button(const QString& caption) const
    {
        for (QToolButton* button : Ui().dxRibbon1->findChildren<QToolButton*>())
            if (button->defaultAction() != nullptr && button->defaultAction()->text().remove('&') == caption)
                return button;
        ADD_FAILURE() << "no button " << caption.toStdString();
        return nullptr;
    }

    void Click(const QString& caption) const
    {
        LetIdle();
        QTest::mouseClick(Button(caption), Qt::LeftButton);
        LetIdle();
    }

    bool IsEnabled(const QString& caption) const
    {
        LetIdle();
        return Button(caption)->isEnabled();
    }

    void Add(const QString& name)
    {
        FPrompts.ProjectFile = ProjectFile(name);
        Click("Add Project");
    }

    QString OutputFolder(const QString& name) const { return Path(name + "/" + name + "/Corvadine"); }

    TScriptedPrompts FPrompts;
    std::unique_ptr<TMainForm> FForm;
};

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
    EXPECT_EQ(FForm->size(), QSize(1008, 729)) << "no text may make it higher";
    const QRect bounds(10, 0, 1020, 760);
    FForm.reset();
    PutFile(Path("program/CorvadineBase.ini"),
        "[Corvadine]\nWindowsState=0\nScreenLeft=10\nScreenTop=0\nScreenWidth=1020\nScreenHeight=760\n");
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

TEST_F(MainFormTest, GeneratesShowsUpdatesAndClears)
{
    Start({ "A" });
    for (const TField field : { TField::IncAndroid, TField::IncIPhone, TField::IncIPad })
        Table().SetField(field, false);
    Table().SetField(TField::IconImageName, Path("icon.png"));
    Click("Save Changes");
    EXPECT_FALSE(IsEnabled("Update Project"));
    Click("Generate");
    EXPECT_EQ(Ui().MView->FileNames(),
        QStringList({ "UWP_DelphiLogo44.png", "UWP_DelphiLogo150.png", "Icon_MainIcon.ico" }));
    EXPECT_EQ(Ui().PB->value(), 2);
    EXPECT_EQ(FForm->State().GenList.size(), 3U);
    EXPECT_EQ(QImage(OutputFolder("A") + "/UWP_DelphiLogo44.png").size(),
        QSize(1, 1).scaled(44, 44, Qt::KeepAspectRatio))
        << "the blank image: the chosen path was not loaded by the table alone";

    const QByteArray projectBytes = FileBytes(ProjectFile("A"));
    PutFile(ProjectFile("A"), "<Project>");
    for (int i = 0; i < 2; ++i) {
        Click("Update Project");
        EXPECT_EQ(FPrompts.TakeShown().size(), 1) << "no XML";
    }
    PutFile(ProjectFile("A"), projectBytes);
    Click("Update Project");
    EXPECT_EQ(QApplication::overrideCursor(), nullptr) << "a failed update leaves it, but once";
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

TEST_F(MainFormTest, RunKeepsToItsProjectAndClosingEndsIt)
{
    Start({ "B", "A" });
    // Does something in the middle of the next run, as a user might.
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

TEST_F(MainFormTest, RunGivesTheBytesOfTheCommandLine)
{
    Start({ "A" });
    for (const auto& [button, file] :
        { std::pair("Icon Image", "icon.png"), std::pair("Launch Image", "launch.png") }) {
        FPrompts.Image = Path(file);
        Click(button);
    }
    Click("Save Changes");
    Click("Generate");
    TGenJob job = JobOf(Current());
    job.Settings.OutputFolder = Path("other");
    const auto list = RunGeneration(job);
    EXPECT_EQ(list, FForm->State().GenList);
    for (const TGenRec& record : list)
        EXPECT_EQ(FileBytes(OutputPath(job.Settings, record)),
            FileBytes(OutputFolder("A") + "/" + ImageFileName(record.ID)))
            << record.ID.toStdString();
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
