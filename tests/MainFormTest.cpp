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
#include <QTimer>
#include <QToolButton>

using namespace Corvadine;
using namespace Corvadine::Testing;

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
        for (const char* name : { "A", "B", "C" }) {
            ASSERT_TRUE(QDir().mkpath(Path(name)));
            PutFile(ProjectFile(name),
                "<Project><PropertyGroup><ProjectGuid>{1}</ProjectGuid><UWP_DelphiLogo44/>"
                "<UWP_DelphiLogo150>x</UWP_DelphiLogo150></PropertyGroup></Project>");
        }
        QImage icon(60, 40, QImage::Format_ARGB32);
        icon.fill(qRgba(10, 20, 30, 255));
        ASSERT_TRUE(icon.save(Path("icon.png")));
        icon.fill(qRgb(200, 0, 0));
        ASSERT_TRUE(icon.save(Path("launch.png")));
    }

    QString ProjectFile(const QString& name) const { return Path(name + "/" + name + ".dproj"); }

    // Starts the program, or restarts it.
    TMainForm& Start()
    {
        FForm.reset();
        FForm = std::make_unique<TMainForm>(Path("program"), FPrompts);
        FForm->StartUp();
        FForm->show();
        LetIdle();
        return *FForm;
    }

    QToolButton* Button(const QString& caption) const
    {
        for (QToolButton* button : FForm->Controls().dxRibbon1->findChildren<QToolButton*>())
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

    // Only Windows' two images and the icon, so that a run is short.
    void TickOnlyWindows()
    {
        TProjectsTable& table = FForm->tblProjects();
        for (const TField field : { TField::IncAndroid, TField::IncIPhone, TField::IncIPad })
            table.SetField(field, false);
        table.SetField(TField::IconImageName, Path("icon.png"));
        Click("Save Changes");
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
    EXPECT_EQ(FForm->Controls().cbProjects->Text(), ProjectFile("B"));
    FForm.reset();
    EXPECT_EQ(TSettingsFile(Path("program/CorvadineBase.ini")).Text("ProjectFile"), ProjectFile("B"));

    PutFile(Path("program/Corvadine.CAB"), "left over");
    Start();
    EXPECT_EQ(FForm->tblProjects().Current().ProjectFile, ProjectFile("B"));
    EXPECT_FALSE(QFile::exists(Path("program/Corvadine.CAB")));
    FForm.reset();
    QFile::remove(ProjectFile("B"));
    Start();
    EXPECT_EQ(FForm->tblProjects().Current().ProjectFile, ProjectFile("A")) << "its file is gone";
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
    const TProject project = FForm->tblProjects().Current();
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
    EXPECT_EQ(FForm->tblProjects().Rows().size(), 1U);
    EXPECT_FALSE(QFile::exists(older));
}

TEST_F(MainFormTest, EditsWaitForSaveAndAMoveDropsThem)
{
    Start();
    Add("A");
    Add("B");
    auto* windows = FForm->findChildren<TFieldCheckBox*>().last();
    QTest::mouseClick(windows, Qt::LeftButton, {}, QPoint(8, windows->height() / 2));
    EXPECT_FALSE(FForm->tblProjects().Current().IncWindows);
    EXPECT_TRUE(IsEnabled("Save Changes"));
    EXPECT_FALSE(IsEnabled("Add Project"));
    EXPECT_FALSE(IsEnabled("Generate"));
    Click("Cancel Changes");
    EXPECT_TRUE(windows->isChecked());
    QTest::mouseClick(windows, Qt::LeftButton, {}, QPoint(8, windows->height() / 2));
    FForm->Controls().cbProjects->SetValue(1);
    EXPECT_FALSE(FForm->tblProjects().IsEditing());
    FForm->Controls().cbProjects->SetValue(2);
    EXPECT_TRUE(windows->isChecked());

    Add("A");
    EXPECT_THAT(
        FPrompts.TakeShown().join('\n').toStdString(), ::testing::HasSubstr("UNIQUE constraint failed"));
    EXPECT_TRUE(IsEnabled("Cancel Changes"));
    Click("Cancel Changes");
    EXPECT_EQ(FForm->Controls().cbProjects->Text(), ProjectFile("B"));
}

TEST_F(MainFormTest, DeleteActsOnTheFocusedEditorAfterAQuestion)
{
    Start();
    Add("A");
    QApplication::setActiveWindow(FForm.get());
    FForm->Controls().PB->setFocus();
    EXPECT_FALSE(IsEnabled("Delete Project"));
    FForm->Controls().cb2xWidth->setFocus();
    ASSERT_TRUE(IsEnabled("Delete Project"));
    FPrompts.Yes = false;
    Click("Delete Project");
    EXPECT_EQ(FForm->tblProjects().Rows().size(), 1U);
    FPrompts.Yes = true;
    Click("Delete Project");
    EXPECT_EQ(FForm->tblProjects().Rows().size(), 0U);
    EXPECT_EQ(FPrompts.Shown, QStringList({ "confirm: Delete Project?", "confirm: Delete Project?" }));
    EXPECT_EQ(FForm->Controls().cbProjects->Text(), ProjectFile("A")) << "the lookup is not bound to the row";
}

TEST_F(MainFormTest, GeneratesShowsUpdatesAndClears)
{
    Start();
    Add("A");
    TickOnlyWindows();
    EXPECT_FALSE(IsEnabled("Update Project"));
    Click("Generate");
    EXPECT_EQ(FForm->Controls().MView->FileNames(),
        QStringList({ "UWP_DelphiLogo44.png", "UWP_DelphiLogo150.png", "Icon_MainIcon.ico" }));
    EXPECT_EQ(FForm->Controls().PB->value(), 2);
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
        ::testing::HasSubstr("<UWP_DelphiLogo44>A\\Corvadine\\UWP_DelphiLogo44.png</UWP_DelphiLogo44>"));

    Click("Del All Images");
    EXPECT_EQ(FPrompts.TakeShown(),
        QStringList({ "confirm: This will delete all images in folder " + OutputFolder("A")
                + " Do you wish to proceed?",
            "info: 3 Images Deleted" }));
    EXPECT_EQ(FForm->Controls().MView->Count(), 0);
    EXPECT_TRUE(IsEnabled("Update Project")) << "stays as it was";

    QFile::remove(ProjectFile("A"));
    Click("Update Project");
    EXPECT_EQ(FPrompts.TakeShown(), QStringList("error: The Project does not exist!"));
}

TEST_F(MainFormTest, SwitchingProjectsFollowsTheirFolders)
{
    Start();
    for (const char* name : { "A", "B", "C" })
        Add(name);
    TProjectsTable& table = FForm->tblProjects();
    TProjectLookup& lookup = *FForm->Controls().cbProjects;
    const auto fill = [&](const QString& folder, int count) {
        ASSERT_TRUE(QDir().mkpath(folder));
        for (int i = 0; i < count; ++i)
            ASSERT_TRUE(QFile::copy(Path("icon.png"), folder + QStringLiteral("/%1.png").arg(i)));
    };
    fill(OutputFolder("A"), 2);
    const auto shown = [&] {
        LetIdle();
        return std::pair(FForm->Controls().MView->Count(), FForm->State().FilesGenerated);
    };
    lookup.SetValue(1);
    EXPECT_EQ(shown(), std::pair(2, true));
    EXPECT_EQ(FForm->State().GenList.size(), 37U);
    lookup.SetValue(2); // its folder does not exist
    EXPECT_EQ(shown(), std::pair(2, true));
    table.SetField(TField::OutputFolder, QString());
    table.Post();
    lookup.SetValue(3);
    lookup.SetValue(2);
    EXPECT_EQ(shown(), std::pair(0, false));
    lookup.SetValue(1); // back to the folder that was shown last: nothing is filled
    EXPECT_EQ(shown(), std::pair(0, false));
}

TEST_F(MainFormTest, ChoosesDropsAndRemovesImages)
{
    Start();
    Add("A");
    FPrompts.Image = Path("icon.png");
    Click("Icon Image");
    EXPECT_EQ(FPrompts.StartFolder, Path("A/")) << "nothing chosen yet: beside the project file";
    EXPECT_EQ(FForm->Controls().ImageEnViewIcon->Image().size(), QSize(60, 40));
    EXPECT_EQ(FForm->tblProjects().Current().IconImageName, Path("icon.png"));
    EXPECT_TRUE(FForm->tblProjects().IsEditing());
    Click("Save Changes");
    Click("Icon Image"); // cancelled
    EXPECT_EQ(FPrompts.StartFolder, Path("") + QDir::separator());
    EXPECT_FALSE(FForm->tblProjects().IsEditing());
    QTest::mouseClick(FForm->Controls().btnRemoveIcon, Qt::LeftButton);
    EXPECT_TRUE(FForm->Controls().ImageEnViewIcon->IsEmpty());
    Click("Cancel Changes");
    EXPECT_EQ(FForm->tblProjects().Current().IconImageName, Path("icon.png"));
    EXPECT_TRUE(FForm->Controls().ImageEnViewIcon->IsEmpty())
        << "shown again with the next change of project";
}

TEST_F(MainFormTest, PicksTheIconsColourFromEitherView)
{
    Start();
    Add("A");
    FForm->Controls().ImageEnViewIcon->Load(Path("icon.png"), TDecoderChoice::ByContent);
    FForm->Controls().ImageEnViewSplash->Load(Path("launch.png"), TDecoderChoice::ByContent);
    TImageView* launch = FForm->Controls().ImageEnViewSplash;
    Click("Pick Color");
    QTest::mouseMove(launch, QPoint(115, 115));
    LetIdle();
    EXPECT_EQ(FForm->Controls().cbBackground->Value(), 0x1E140A);
    EXPECT_FALSE(FForm->tblProjects().IsEditing()) << "previewed, not stored";
    QTest::mouseClick(launch, Qt::RightButton, {}, QPoint(115, 115));
    EXPECT_EQ(FForm->tblProjects().Current().PickColor, 0x1E140A);
    EXPECT_FALSE(Button("Pick Color")->isChecked());
    Click("Save Changes");
    Click("Pick Color");
    QTest::mouseClick(launch, Qt::LeftButton, {}, QPoint(115, 2)); // the margin above a wide image
    EXPECT_EQ(FForm->tblProjects().Current().PickColor, -1);
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
    Start();
    Add("B");
    Add("A");
    // Does something in the middle of the next run, as a user might.
    const auto during = [this](const std::function<void()>& action) {
        QObject::connect(FForm->Controls().PB, &QProgressBar::valueChanged, FForm.get(),
            [action, done = false](int value) mutable {
                if (value == 5 && !std::exchange(done, true))
                    action();
            });
    };
    const auto show = [this](qint64 id) { FForm->Controls().cbProjects->SetValue(id); };
    QDir().mkpath(OutputFolder("B"));
    during([&] {
        EXPECT_FALSE(FForm->Controls().dxRibbon1->isEnabled());
        show(1);
    });
    Click("Generate");
    EXPECT_EQ(QDir(OutputFolder("A")).entryList(QDir::Files).size(), 38);
    EXPECT_TRUE(QDir(OutputFolder("B")).isEmpty());
    EXPECT_EQ(FForm->Controls().MView->Count(), 0);
    EXPECT_FALSE(FForm->State().FilesGenerated) << "the project shown now has no files";

    show(2);
    during([&] {
        show(1);
        show(2);
    });
    Click("Generate");
    EXPECT_TRUE(QTest::qWaitFor([this] { return FForm->Controls().MView->Count() == 38; }))
        << "back before the end";
    EXPECT_TRUE(FForm->State().FilesGenerated);
    EXPECT_EQ(FForm->State().GenList.size(), 38U) << "the Windows icon among them";

    QDir().rmdir(OutputFolder("B"));
    during([&] { show(1); });
    Click("Generate");
    EXPECT_EQ(FForm->Controls().MView->Count(), 38) << "a missing folder leaves the thumbnails";
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);

    during([this] { EXPECT_FALSE(FForm->close()); });
    Click("Generate");
    EXPECT_FALSE(FForm->isVisible());
    EXPECT_EQ(QDir(OutputFolder("B")).entryList(QDir::Files).size(), 5);
}

TEST_F(MainFormTest, RunGivesTheBytesOfTheCommandLine)
{
    Start();
    Add("A");
    for (const auto& [button, file] :
        { std::pair("Icon Image", "icon.png"), std::pair("Launch Image", "launch.png") }) {
        FPrompts.Image = Path(file);
        Click(button);
    }
    Click("Save Changes");
    Click("Generate");
    TGenJob job = JobOf(FForm->tblProjects().Current());
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
        TProject project;
        project.ProjectFile = ProjectFile("A");
        project.OutputFolder = Path("out");
        project.IncWindows = true;
        project.TwoxSize = 400;
        TProjectStore(Path("program/Corvadine.db")).Insert(project, fields);
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
    Start();
    Add("A");
    PutFile(Path("A/A"), "in the way");
    Click("Generate");
    EXPECT_EQ(FPrompts.TakeShown(), QStringList("error: The Output Folder does not exist!"));
    QFile::remove(Path("A/A"));
    ASSERT_TRUE(QDir().mkpath(OutputFolder("A") + "/Android_LauncherIcon48.png")); // a folder of that name
    Click("Generate");
    EXPECT_THAT(FPrompts.TakeShown().join('\n').toStdString(),
        ::testing::HasSubstr("Android_LauncherIcon48.png: Is a directory"));
    EXPECT_EQ(FForm->Controls().MView->FileNames(), QStringList("Android_LauncherIcon36.png"))
        << "what was written stays";
    EXPECT_TRUE(FForm->Controls().dxRibbon1->isEnabled());
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_FALSE(IsEnabled("Update Project"));

    FForm.reset();
    PutFile(Path("program/Corvadine.db"), "this is no database, but long enough to look at");
    Start();
    EXPECT_EQ(FPrompts.TakeShown().size(), 1);
    EXPECT_TRUE(FForm->isVisible()) << "the window opens all the same";
}

TEST(SettingsFileTest, ReadsWhatOtherProgramsWriteAndKeepsValuesRaw)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.ini");
    const QString text =
        QStringLiteral("; note\r\n[corvadine]\r\nBaseImage=C:\\new\\\"Größe\"\r\nIncIPad=0\r\nrubbish\r\n");
    const QByteArray utf16 =
        QByteArray("\xFF\xFE") + QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    for (const QByteArray& bytes :
        { text.toUtf8(), "\xEF\xBB\xBF" + text.toUtf8(), utf16, text.toLatin1() }) {
        PutFile(path, bytes);
        const TSettingsFile settings(path);
        EXPECT_TRUE(settings.HasSection());
        EXPECT_EQ(settings.Text("BaseImage"), QStringLiteral("C:\\new\\\"Größe\""))
            << bytes.toHex().constData();
        EXPECT_FALSE(settings.Boolean("IncIPad", true));
        EXPECT_EQ(settings.Integer("rubbish", 7), 7);
    }
    TSettingsFile settings(path);
    settings.SetInteger("WindowsState", 2);
    settings.Save();
    EXPECT_EQ(TSettingsFile(path).Text("BaseImage"), QStringLiteral("C:\\new\\\"Größe\""));
    EXPECT_EQ(TSettingsFile(path).Integer("WindowsState", 0), 2);
}
