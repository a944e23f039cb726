#include "app/ColorBox.h"
#include "tests/MainFormTesting.h"
#include "tests/TestingSystem.h"
#include "widgets/ImageView.h"
#include "widgets/ThumbnailView.h"

#include <SQLiteCpp/Database.h>

#include <QDropEvent>
#include <QMimeData>
#include <QProgressBar>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class MainFormTest : public TMainFormTest { };

TEST_F(MainFormTest, RestartReopensTheProjectAndStandsWhereItStoodWithItsFrame)
{
    Start();
    EXPECT_EQ(FForm->height(), 729) << "no text may make it higher";
    EXPECT_TRUE(QDir(Path("program/Project Backups")).exists());
    EXPECT_TRUE(FForm->windowTitle().startsWith("FMX Corvadine ("));
    for (const char* caption :
        { "Save Changes", "Cancel Changes", "Delete Project", "Generate", "Update Project" })
        EXPECT_FALSE(IsEnabled(caption)) << caption;
    Add("A");
    Add("B");
    PutFile(Path("program/Corvadine.CAB"), "left over");
    Start();
    EXPECT_EQ(Current().ProjectFile, ProjectFile("B"));
    EXPECT_FALSE(QFile::exists(Path("program/Corvadine.CAB")));
    QFile::remove(ProjectFile("B"));
    Start();
    EXPECT_EQ(Current().ProjectFile, ProjectFile("A")) << "its file is gone";
    EXPECT_EQ(FPrompts.Shown, QStringList());

    FForm.reset();
    const QRect bounds(10, 0, 1200, 760);
    PutFile(Path("program/CorvadineBase.ini"),
        "[Corvadine]\nWindowsState=0\nScreenLeft=10\nScreenTop=0\nScreenWidth=1200\nScreenHeight=760\n");
    for (int i = 0; i < 2; ++i) { // the second start reads what the first has written
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
    EXPECT_GE(FForm->x(), 0) << "off every screen";

    PutFile(older, "[Corvadine]\nProjectFile=" + ProjectFile("A").toUtf8());
    Start();
    const QStringList shown = FPrompts.TakeShown(); // the same project again is an error
    ASSERT_EQ(shown.size(), 1);
    EXPECT_THAT(shown[0].toStdString(),
        AllOf(StartsWith("error: Cannot import the project of the older release from " + older.toStdString()),
            HasSubstr("UNIQUE constraint failed"), HasSubstr("until that file is renamed or deleted")));
    EXPECT_TRUE(QFile::exists(older)) << "and is tried again";
    PutFile(older, "[Other]\nProjectFile=x");
    Start();
    EXPECT_EQ(Table().Rows().size(), 1U);
    EXPECT_FALSE(QFile::exists(older));
}

TEST_F(MainFormTest, EditsWaitForSaveAndDisableOtherCommands)
{
    Start({ "A", "B" });
    auto* windows = FForm->findChildren<TFieldCheckBox*>().last();
    QTest::mouseClick(windows, Qt::LeftButton, {}, QPoint(8, windows->height() / 2));
    EXPECT_FALSE(Current().IncWindows);
    EXPECT_FALSE(IsEnabled("Add Project"));
    EXPECT_FALSE(IsEnabled("Generate"));
    Click("Cancel Changes");
    ASSERT_TRUE(IsEnabled("Generate"));
    QTest::mouseClick(windows, Qt::LeftButton, {}, QPoint(8, windows->height() / 2));
    QTest::mouseClick(Button("Generate"), Qt::LeftButton); // before the event loop is idle
    EXPECT_EQ(Ui().MView->model()->rowCount(), 0);
    for (const auto modifier : { Qt::ControlModifier, Qt::AltModifier }) {
        Table().Edit();
        LetIdle();
        QTest::keyClick(FForm.get(), Qt::Key_S, modifier);
        EXPECT_TRUE(QTest::qWaitFor([this] { return !Table().IsEditing(); })) << "the shortcut saves";
    }
    EXPECT_FALSE(Table().Rows()[1].IncWindows);

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
    for (QWidget* widget : std::initializer_list<QWidget*> { Ui().PB, Ui().cbProjects, Ui().cb2xWidth }) {
        widget->setFocus();
        EXPECT_EQ(IsEnabled("Delete Project"), widget == Ui().cb2xWidth) << "an editor of the project only";
    }
    FPrompts.Answer = [] { return false; };
    Click("Delete Project");
    EXPECT_EQ(Table().Rows().size(), 1U);
    FPrompts.Answer = [] { return true; };
    Click("Delete Project");
    EXPECT_EQ(Table().Rows().size(), 0U);
    EXPECT_EQ(FPrompts.Shown, QStringList({ "confirm: Delete Project?", "confirm: Delete Project?" }));
    EXPECT_EQ(Ui().cbProjects->Text(), ProjectFile("A")) << "the lookup is not bound to the row";
}

TEST_F(MainFormTest, SwitchingProjectsFollowsTheirFolders)
{
    Start({ "A", "B", "C" });
    for (int i = 0; i < 2; ++i)
        PutFile(OutputFolder("A") + u"/%1.png"_s.arg(i), FileBytes(Path("icon.png")));
    const auto shown = [&] {
        LetIdle();
        return std::pair(Ui().MView->Count(), FForm->State().FilesGenerated);
    };
    Choose(1);
    EXPECT_EQ(shown(), std::pair(2, true));
    EXPECT_EQ(FForm->State().GenList.size(), 37U);
    Choose(2); // the output folder of this project is missing
    EXPECT_EQ(shown(), std::pair(2, true));
    Table().SetField(TField::OutputFolder, QString());
    Table().Post();
    Choose(3);
    Choose(2);
    EXPECT_EQ(shown(), std::pair(0, false));
    Choose(1); // the view was last filled from this folder, and is not filled again
    EXPECT_EQ(shown(), std::pair(0, false));
}

TEST_F(MainFormTest, ChoosesAndRemovesImagesAndPicksTheIconsColorFromEitherView)
{
    Start({ "A" });
    TImageView* icon = Ui().ImageEnViewIcon;
    TImageView* launch = Ui().ImageEnViewSplash;
    FPrompts.Image = Path("icon.png");
    Click("Icon Image");
    EXPECT_EQ(FPrompts.StartFolder, Path("A/")) << "nothing chosen yet: beside the project file";
    EXPECT_EQ(icon->Image().size(), QSize(60, 40));
    EXPECT_EQ(Current().IconImageName, Path("icon.png"));
    Click("Save Changes");
    Click("Icon Image"); // cancelled
    EXPECT_EQ(FPrompts.StartFolder, Path("") + QDir::separator());
    EXPECT_FALSE(Table().IsEditing());

    launch->Load(Path("launch.png"));
    QWindow* window = FForm->windowHandle();
    constexpr int IconColor = 0x1E140A;
    const QPoint middle(115, 115);
    const QPoint margin(115, 2); // a point above the wide image
    const std::tuple<TImageView*, Qt::MouseButton, QPoint, int> cases[] {
        { icon, Qt::RightButton, middle, IconColor },
        { icon, Qt::LeftButton, margin, -1 },
        { launch, Qt::MiddleButton, middle, IconColor },
    };
    for (const auto& [view, button, position, color] : cases) {
        Click("Pick Color");
        EXPECT_EQ(icon->cursor().shape(), Qt::PointingHandCursor);
        QTest::mouseMove(window); // moves the pointer away first
        QTest::mouseMove(window, view->mapTo(FForm.get(), position));
        LetIdle(); // a preview needs no pressed button
        EXPECT_EQ(Ui().cbBackground->Value(), color);
        EXPECT_FALSE(Table().IsEditing()) << "previewed, not stored";
        QTest::mouseClick(window, button, {}, view->mapTo(FForm.get(), position));
        const QPoint other = position == margin ? middle : margin;
        // Pick mode has ended, so this click picks nothing.
        QTest::mouseClick(window, button, {}, view->mapTo(FForm.get(), other));
        EXPECT_EQ(Current().PickColor, color);
        EXPECT_FALSE(Button("Pick Color")->isChecked());
        EXPECT_FALSE(icon->testAttribute(Qt::WA_SetCursor)) << "the default cursor again";
        Click("Save Changes");
    }
    Click("Pick Color");
    Click("Pick Color");
    EXPECT_EQ(icon->cursor().shape(), Qt::PointingHandCursor) << "stays when the button is released by hand";

    QTest::mouseClick(Ui().btnRemoveIcon, Qt::LeftButton);
    Click("Cancel Changes");
    EXPECT_EQ(Current().IconImageName, Path("icon.png"));
    EXPECT_TRUE(icon->IsEmpty()) << "shown again with the next change of project";
    Click("Pick Color");
    QTest::mouseClick(window, Qt::LeftButton, {}, launch->mapTo(FForm.get(), margin));
    EXPECT_EQ(Current().PickColor, 0xFFFFFF) << "the blank pixel of an empty view";
}

TEST_F(MainFormTest, ADroppedPictureThatCannotBeReadChangesNothing)
{
    Start({ "A" });
    const QString heic = Path("photo.png"); // the name does not matter
    PutFile(heic, QByteArray::fromHex("00000018") + "ftypheic" + QByteArray(4, '\0') + "mif1heic");
    for (TImageView* view : { Ui().ImageEnViewIcon, Ui().ImageEnViewSplash }) {
        emit view->FileDropped(Path("icon.png"));
        LetIdle();
        EXPECT_EQ(view->Image().size(), QSize(60, 40));
        Click("Save Changes");
        emit view->FileDropped(heic);
        LetIdle();
        EXPECT_EQ(FPrompts.TakeShown(),
            QStringList("error: Cannot load the image " + heic
                + ": it is a HEIC file, which Corvadine does not read: export it as PNG, 1024 x 1024 or "
                  "larger"));
        EXPECT_EQ(view->Image().size(), QSize(60, 40));
        EXPECT_FALSE(Table().IsEditing());
    }
}

TEST_F(MainFormTest, UpdateCheckRunsInTheProgramFolderAndMayEndTheProgram)
{
    const QString before = QDir::currentPath();
    Start();
    for (const bool endsProgram : { false, true }) {
        FForm->SetUpdateCheck([&](const QWidget*, const QString& folder) {
            EXPECT_EQ(folder, QDir::fromNativeSeparators(Path("program")));
            return endsProgram;
        });
        Click("Check for Update");
        EXPECT_EQ(QDir::currentPath(), QDir(Path("program")).canonicalPath());
        EXPECT_EQ(FForm->isVisible(), !endsProgram);
    }
    QDir::setCurrent(before);
}

TEST_F(MainFormTest, ComingBackToTheWindowShowsWhatAnotherProgramWrote)
{
    Start({ "A", "B" });
    TProject project = Current();
    project.TwoxSize = 123;
    project.IconImageName = Path("icon.png");
    TProjectStore other(Path("program/Corvadine.db"));
    other.Update(project, { TField::TwoxSize, TField::IconImageName });
    {
        SQLite::Database lock(Path("program/Corvadine.db").toStdString(), SQLite::OPEN_READWRITE);
        lock.exec("BEGIN EXCLUSIVE");
        ComeBack();
    }
    ComeBack();
    EXPECT_EQ(Ui().cb2xWidth->Value(), 123);
    EXPECT_EQ(Ui().ImageEnViewIcon->Image().size(), QSize(60, 40));

    Add("C");
    other.Delete(Current());
    ComeBack();
    EXPECT_EQ(Current().ID, project.ID);
    EXPECT_EQ(Ui().cbProjects->Text(), ProjectFile("B")) << "and no project that is gone";

    // While a command runs, the window must not take over changes by other programs. Otherwise "Delete
    // Project" would delete the next project.
    FPrompts.Answer = [&] {
        other.Delete(project);
        ComeBack();
        return true;
    };
    Ui().cb2xWidth->setFocus();
    Click("Delete Project");
    EXPECT_EQ(other.ReadProjects().size(), 1U);
    EXPECT_EQ(Current().ProjectFile, ProjectFile("A"));
    EXPECT_EQ(FPrompts.Shown, QStringList("confirm: Delete Project?"));
}

TEST_F(MainFormTest, LookupDoesNotTakeTheNameOfAProjectThatGetsAFreedID)
{
    Start({ "A", "B", "C" });
    const TProject deleted = Current();
    Ui().cb2xWidth->setFocus();
    Click("Delete Project");
    EXPECT_EQ(Ui().cbProjects->Text(), ProjectFile("C"));
    TProjectStore other(Path("program/Corvadine.db"));
    ASSERT_EQ(other.Insert({ .ProjectFile = "D" }, { TField::ProjectFile }).ID, deleted.ID);
    ComeBack();
    EXPECT_EQ(Table().Rows().size(), 3U);
    EXPECT_EQ(Ui().cbProjects->Text(), ProjectFile("C")) << "else it would name D and delete B";
    EXPECT_EQ(Current().ProjectFile, ProjectFile("B"));

    Choose(deleted.ID);
    other.Delete(Current());
    other.Insert({ .ProjectFile = ProjectFile("C") }, { TField::ProjectFile });
    ComeBack();
    EXPECT_EQ(Ui().cbProjects->Text(), Current().ProjectFile);
    Ui().cb2xWidth->setFocus();
    Click("Delete Project");
    EXPECT_EQ(other.ReadProjects().size(), 2U);
    EXPECT_FALSE(Table().LookupByProjectFile(ProjectFile("C")));
}

TEST_F(MainFormTest, SavingShowsTheImagesThatAnotherProgramHasSetMeanwhile)
{
    Start({ "A" });
    PutFile(Path("out/old.png"), FileBytes(Path("icon.png")));
    QTest::keyClicks(Ui().cb2xWidth, "0");
    TProject project = Current();
    project.IconImageName = Path("icon.png");
    project.OutputFolder = Path("out");
    TProjectStore(Path("program/Corvadine.db"))
        .Update(project, { TField::IconImageName, TField::OutputFolder });
    ComeBack();
    EXPECT_TRUE(Ui().ImageEnViewIcon->IsEmpty()) << "not during an edit";
    Click("Save Changes");
    EXPECT_EQ(Current().TwoxSize, 4000);
    EXPECT_EQ(Ui().ImageEnViewIcon->Image().size(), QSize(60, 40));
    EXPECT_EQ(Names(Ui().MView), QStringList("old.png"));
}

TEST_F(MainFormTest, TakesAProjectFileDroppedAnywhereAsACopy)
{
    Start();
    // Sends the events of a drag and drop onto `target`. Returns the action that is reported to the source of
    // the drag.
    const auto drop = [&](const QWidget* target, const char* name, Qt::DropActions offered) {
        QMimeData data;
        data.setUrls({ QUrl::fromLocalFile(ProjectFile(name)) });
        const QPoint middle = target->mapTo(FForm.get(), target->rect().center());
        const auto send = [&](auto event) {
            event.ignore();
            QApplication::sendEvent(FForm->windowHandle(), &event);
            return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
        };
        if (send(QDragEnterEvent(middle, offered, &data, Qt::LeftButton, {})) != Qt::IgnoreAction)
            return send(QDropEvent(middle, offered, &data, Qt::LeftButton, {}));
        QDragLeaveEvent leave;
        QApplication::sendEvent(FForm->windowHandle(), &leave);
        return Qt::IgnoreAction;
    };
    constexpr auto Offered = Qt::CopyAction | Qt::MoveAction;
    EXPECT_EQ(drop(Ui().cb2xWidth, "A", Qt::MoveAction), Qt::IgnoreAction);
    EXPECT_EQ(drop(Ui().cb2xWidth, "A", Offered), Qt::CopyAction);
    EXPECT_EQ(drop(Ui().cb2xWidth, "B", Offered), Qt::CopyAction) << "the box is enabled now";
    EXPECT_EQ(Current().ProjectFile, ProjectFile("B"));
    for (const QWidget* widget : FForm->findChildren<QWidget*>()) {
        if (!widget->isVisible() || widget->isWindow())
            continue;
        EXPECT_EQ(drop(widget, "C", Offered), Qt::CopyAction) << widget->metaObject()->className();
        EXPECT_EQ(Current().ProjectFile, ProjectFile("C"));
        Table().Delete();
    }
    EXPECT_EQ(Ui().cb2xWidth->text(), "400");
    Table().Edit();
    EXPECT_EQ(drop(Ui().PB, "C", Offered), Qt::IgnoreAction) << "would drop the edit";
}

TEST_F(MainFormTest, DatabaseThatCannotBeOpenedAtTheStartIsOpenedLater)
{
    Start({ "A", "B" });
    FForm.reset();
    {
        SQLite::Database lock(Path("program/Corvadine.db").toStdString(), SQLite::OPEN_READWRITE);
        lock.exec("BEGIN EXCLUSIVE");
        Start();
        ComeBack();
        EXPECT_THAT(FPrompts.TakeShown().join('\n').toStdString(), EndsWith("database is locked"))
            << "said once";
        EXPECT_EQ(Ui().cbProjects->Text(), "not connected");
        EXPECT_EQ(FForm->State().MyIniFileName, QString()) << "the start-up has ended there";
        EXPECT_EQ(FForm->State().BackupFolder, Path("program/Project Backups") + QDir::separator());
        Click("Help"); // the help was not set up
    }
    ComeBack();
    EXPECT_EQ(Ui().cbProjects->Text(), ProjectFile("B"));
    EXPECT_EQ(Current().ProjectFile, ProjectFile("B")) << "the remembered project";
    EXPECT_NE(FForm->State().HelpRouter, nullptr);
    ComeBack();
    Add("C");
    EXPECT_EQ(Ui().cbProjects->Text(), ProjectFile("C"));
    EXPECT_EQ(FPrompts.Shown, QStringList());
}

TEST_F(MainFormTest, FollowsADatabaseThatAnotherReplaces)
{
    if (!IsPosix())
        GTEST_SKIP() << "Windows lets nothing replace an open database";
    Start({ "A", "B" });
    const QString database = Path("program/Corvadine.db");
    ASSERT_TRUE(QFile::copy(database, Path("new.db")));
    const TProject other =
        TProjectStore(Path("new.db")).Insert({ .ProjectFile = ProjectFile("C") }, { TField::ProjectFile });
    QTest::keyClicks(Ui().cb2xWidth, "0");
    QFile::remove(database);
    ComeBack();
    Click("Save Changes");
    EXPECT_THAT(FPrompts.TakeShown().join('\n').toStdString(), EndsWith("another program has removed it"));
    ASSERT_TRUE(QFile::rename(Path("new.db"), database));
    Click("Save Changes");
    EXPECT_EQ(TProjectStore(database).ReadProjects()[1].TwoxSize, 4000);
    ComeBack();
    EXPECT_EQ(Table().Rows().size(), 3U);
    EXPECT_EQ(Ui().cbProjects->Text(), ProjectFile("B"));
    Choose(other.ID);
    EXPECT_EQ(Current(), other);
    EXPECT_EQ(FPrompts.Shown, QStringList());
}

// Rows of older databases may lack a value.
TEST_F(MainFormTest, RowsWithoutSomeOptionAreShownAsFarAsTheyGo)
{
    PutFile(Path("out/icon.png"), FileBytes(Path("icon.png")));
    const TProject row {
        .ProjectFile = ProjectFile("A"), .IncWindows = true, .TwoxSize = 400, .OutputFolder = Path("out")
    };
    const auto put = [&](const TFieldSet& fields) {
        FForm.reset(); // closes the database
        QFile::remove(Path("program/Corvadine.db"));
        TProjectStore(Path("program/Corvadine.db")).Insert(row, fields);
    };
    put({ TField::ProjectFile, TField::OutputFolder, TField::IncWindows, TField::TwoxSize });
    Start();
    EXPECT_TRUE(FForm->State().FilesGenerated);
    EXPECT_EQ(FForm->State().GenList.size(), 2U);
    EXPECT_FALSE(IsEnabled("Generate")) << "no background color";

    put({ TField::ProjectFile, TField::OutputFolder });
    Start();
    EXPECT_EQ(FPrompts.Shown, QStringList());
    EXPECT_NE(FForm->State().HelpRouter, nullptr) << "the start-up came to its end";
    EXPECT_TRUE(IsEnabled("Update Project"));
    QTest::keyClicks(Ui().cb2xWidth, "8");
    QTest::keyClick(Ui().cb2xWidth, Qt::Key_Backspace);
    Table().SetField(TField::PickColor, 0);
    Click("Save Changes");
    Click("Generate");
    EXPECT_EQ(FPrompts.TakeShown(),
        QStringList("error: Cannot use the settings of " + ProjectFile("A")
            + ": the option \"2x Width\" has no value"));
}

TEST_F(MainFormTest, FailuresShowTheirTextAndRestoreTheWindow)
{
    Start({ "A" });
    PutFile(Path("A/A"), "in the way");
    Click("Generate");
    EXPECT_EQ(FPrompts.TakeShown(), QStringList("error: The Output Folder does not exist!"));
    QFile::remove(Path("A/A"));
    ASSERT_TRUE(QDir().mkpath(OutputFolder("A") + "/Android_LauncherIcon48.png")); // a folder, not a file
    Click("Generate");
    EXPECT_THAT(FPrompts.TakeShown().join('\n').toStdString(),
        HasSubstr("Android_LauncherIcon48.png: Is a directory"));
    EXPECT_EQ(Names(Ui().MView), QStringList("Android_LauncherIcon36.png")) << "what was written stays";
    EXPECT_TRUE(Ui().dxRibbon1->isEnabled());
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_FALSE(IsEnabled("Update Project"));

    FForm.reset();
    PutFile(Path("program/Corvadine.db"), "this is no database, but long enough to look at");
    Start();
    EXPECT_EQ(FPrompts.TakeShown().size(), 1) << "the window opens all the same";
}
