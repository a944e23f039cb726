#include "cli/Cli.h"

#include "tests/Testing.h"
#include "tests/TestingSystem.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <QDir>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <sstream>

namespace Corvadine::Testing {
namespace {

using ::testing::HasSubstr;

struct TOutcome {
    int Status;
    std::string Out;
    std::string Err;
};

QJsonObject JsonIn(const TOutcome& outcome)
{
    QJsonObject json = QJsonDocument::fromJson(QByteArray::fromStdString(outcome.Out)).object();
    EXPECT_FALSE(json.isEmpty()) << outcome.Out;
    return json;
}

// A data folder and one project, in a folder whose name is difficult to quote and to encode.
class TCliTest : public TFolderTest {
protected:
    void SetUp() override
    {
        PutFile(FProject, FileBytes(FSample + "/Demo.dproj"));
        QImage icon(64, 64, QImage::Format_ARGB32);
        icon.fill(QColor(200, 30, 30, 128));
        icon.save(FIcon);
    }

    QString Home(const char* name) const { return Path(HardName() + u'/' + QLatin1String(name)); }

    // Runs the command line in this process. The test's data folder stands for the program's own folder.
    TOutcome Run(const QStringList& arguments)
    {
        std::ostringstream out;
        std::ostringstream err;
        TCliEnvironment environment { out, err, FData };
        environment.Now = [this] { return FNow; };
        environment.BusyTimeout = std::chrono::milliseconds(1);
        const int status = RunCli(arguments, environment);
        return { status, out.str(), err.str() };
    }

    // Runs the program itself. If `output` is given, the standard output goes to the file `output`.
    TOutcome RunProgram(const QStringList& arguments, const QString& output = {})
    {
        QProcess process;
        process.setStandardOutputFile(output);
        process.start(QStringLiteral(CORVADINE_CLI), QStringList { "--data", FData } + arguments);
        EXPECT_TRUE(process.waitForFinished(-1));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        return { process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString() };
    }

    void AddProject(const QString& platforms = "windows")
    {
        const TOutcome added = Run({ "add", FProject, "--icon", FIcon, "--platforms", platforms });
        ASSERT_EQ(added.Err + added.Out, "1\n");
    }

    // Expects that the command fails with `status`, prints one line with `text` to the error stream, and
    // changes no file.
    void ExpectRefusal(const QStringList& arguments, int status, const std::string& text)
    {
        const auto before = Files();
        const TOutcome outcome = Run(arguments);
        SCOPED_TRACE(arguments.join(u' ').toStdString());
        EXPECT_EQ(outcome.Status, status);
        EXPECT_THAT(outcome.Err, HasSubstr(text));
        EXPECT_EQ(std::count(outcome.Err.begin(), outcome.Err.end(), '\n'), 1) << outcome.Err;
        EXPECT_EQ(outcome.Out, "");
        EXPECT_EQ(Files(), before);
    }

    TFolderContent Files() const { return FolderContent(Path("")); }

    const QString FSample = QStringLiteral(CORVADINE_SAMPLE);
    const QString FHome = Path(HardName());
    const QString FData = Home("data");
    const QString FProject = Home("Demo.dproj");
    const QString FIcon = Home("icon.png");
    const QString FOutput = Home("Demo/Corvadine");
    QDateTime FNow { { 2024, 3, 5 }, { 14, 7, 9 } };
};

TEST_F(TCliTest, DoesTheWholeJobOnTheSample)
{
    const QByteArray original = FileBytes(FProject);
    ASSERT_EQ(
        Run({ "add", FProject, "--icon", FSample + "/icon.png", "--launch", FSample + "/launch.png" }).Out,
        "1\n");
    const auto before = Files();
    const TOutcome plan = Run({ "plan", FProject });
    EXPECT_THAT(plan.Out, HasSubstr("iPhone_Launch2x             400x184    launch"));
    EXPECT_THAT(plan.Out, HasSubstr("57 elements would change"));
    EXPECT_EQ(plan.Err, "");
    EXPECT_EQ(Files(), before);

    EXPECT_EQ(Run({ "generate", "1" }).Out, "38 images in " + FOutput.toStdString() + "\n");
    EXPECT_THAT(Run({ "update", "1", "--dry-run" }).Out, HasSubstr("57 elements would change"));
    EXPECT_EQ(FileBytes(FProject), original);
    EXPECT_EQ(Run({ "update", "1" }).Out,
        "57 Entries updated.\nA backup of the project file was made first.\n  "
            + Home("data/Project Backups").toStdString() + QDir::separator().toLatin1()
            + "Demo.20240305140709.dproj\n");
    EXPECT_THAT(FileBytes(FProject).toStdString(), HasSubstr(">Demo\\Corvadine\\Icon_MainIcon.ico</"));
    EXPECT_EQ(Run({ "check", "--all" }).Out, "OK\n");

    EXPECT_EQ(Run({ "backups", "1" }).Out, "2024-03-05 14:07:09  Demo.20240305140709.dproj  update\n");
    EXPECT_EQ(Run({ "restore", "1", "Demo.20240305140709.dproj" }).Status, 0);
    EXPECT_EQ(FileBytes(FProject), original);
    EXPECT_EQ(JsonIn(Run({ "--json", "backups", "1" }))["backups"].toArray().size(), 2);
}

TEST_F(TCliTest, AnswersEveryCommandWithOneJsonDocument)
{
    // Each entry has the exit status, the end of the error text, and the arguments.
    const QList<std::tuple<int, QString, QStringList>> commands {
        { 1, "data: the folder does not exist", { "show", "1" } },
        { 0, {}, { "add", FProject, "--icon", FIcon, "--platforms", "windows" } },
        { 0, {}, { "list" } },
        { 0, {}, { "show", "1" } },
        { 0, {}, { "set", "1", "--format", "true" } },
        { 0, {}, { "plan", "1" } },
        { 0, {}, { "generate", "--all" } },
        { 1, {}, { "check", "1" } }, // the project file has not been updated
        { 0, {}, { "update", "1", "--dry-run" } },
        { 0, {}, { "update", "1" } },
        { 0, {}, { "check", "1" } },
        { 0, {}, { "backups", "1" } },
        { 0, {}, { "restore", "1" } },
        { 2, "which needs --yes", { "clear", "1" } },
        { 0, {}, { "clear", "1", "--yes" } },
        { 1, "no project of this ID", { "generate", "1", "77" } },
        { 0, {}, { "remove", "1" } },
        { 2, "(see corvadine-cli --help)", { "frob" } },
        { 2, "(see corvadine-cli --help)", {} },
        { 0, {}, { "--help" } },
        { 0, {}, { "--version" } },
    };
    for (const auto& [status, error, arguments] : commands) {
        const TOutcome outcome = Run(arguments + QStringList { "--json" });
        const QJsonObject json = JsonIn(outcome);
        EXPECT_EQ(outcome.Status, status) << outcome.Out;
        EXPECT_EQ(json["ok"].toBool(), status == 0) << outcome.Out;
        EXPECT_EQ(json.contains("error"), !error.isEmpty()) << outcome.Out;
        EXPECT_TRUE(json["error"].toString().endsWith(error)) << outcome.Out;
    }
}

TEST_F(TCliTest, RefusesWrongUsageWithOneLineAndTheAllowedValues)
{
    AddProject();
    const QList<std::pair<QStringList, std::string>> table {
        { { "frob" }, "'frob' is no command (see corvadine-cli --help)" },
        { { "list", "--data=" }, "--data: a folder is required" },
        { { "show" }, "PROJECT is required" },
        { { "show", "" }, "the ID or path given is empty" },
        { { "show", "1", "2" }, "not expected: 2" },
        { { "add", "Demo.dpr" }, "'Demo.dpr' is no .dproj file" },
        { { "set", "1" }, "a setting to change is required (see corvadine-cli set --help)" },
        { { "set", "1", "--compression", "11" }, "--compression: '11' is no whole number from 1 to 10" },
        { { "set", "1", "--twox", "1000000000" }, "1 to 999999999" },
        { { "set", "1", "--twox", "4e2" }, "1 to 999999999" },
        { { "set", "1", "--background", "#+12345" }, "#RRGGBB" },
        { { "set", "1", "--format", "512" }, "'512' is none of 256, true" },
        { { "set", "1", "--filter", "box" }, "none of none, bell, bicubic" },
        { { "set", "1", "--platforms", "ios" }, "none of android, iphone, ipad, windows, all, none" },
        { { "set", "1", "--output=", "--format", "true" }, "--output: a folder is required" },
        { { "generate" }, "PROJECT or --all is required" },
        { { "check", "1", "--all" }, "--all goes without" },
        { { "generate", "1", "--jobs", "0" }, "whole number from 1" },
        { { "set", "1", "--format", "256", "--format=true" }, "--format" },
        { { "clear", "1" }, "would delete 0 files" },
    };
    for (const auto& [arguments, text] : table)
        ExpectRefusal(arguments, 2, text);
    EXPECT_THAT(Run({}).Out, HasSubstr("restore"));

    std::ostream broken(nullptr);
    std::ostringstream err;
    broken.exceptions(std::ios::failbit);
    EXPECT_EQ(RunCli({ "--version" }, { broken, err, FData }), 1) << "the result cannot be printed";
}

TEST_F(TCliTest, KeepsAndShowsSettingsInItsOwnWords)
{
    AddProject();
    const QJsonObject before = JsonIn(Run({ "show", "1", "--json" }))["project"].toObject();
    EXPECT_EQ(before["format"], "256");
    EXPECT_EQ(before["background"], "#FFFFFF");
    EXPECT_EQ(before["output"], FOutput);
    const QStringList set { "set", FProject, "--platforms", "IPAD,android", "--background", "ff8000",
        "--format", "true", "--compression", "10", "--twox", "1", "--filter", "bspline",
        "--icon=", "--output=" + Path("out=") };
    ASSERT_EQ(Run(set).Status, 0);
    EXPECT_THAT(Run({ "show", "1" }).Out,
        Matches("id +1\nproject +.*Demo.dproj\nicon +\"\"\nlaunch +\"\"\nplatforms +android,ipad\n"
                "background +#FF8000\nformat +true\ncompression +10\ntwox +1\nfilter +bspline\n"
                "output +.*out=\n"));
}

TEST_F(TCliTest, RefusesBadFilesAndChangesNothing)
{
    ExpectRefusal({ "list" }, 1, "data: the folder does not exist");
    QDir().mkpath(FData);
    EXPECT_EQ(Run({ "list" }).Status, 0);
    EXPECT_TRUE(QDir(FData).isEmpty()); // reading creates nothing
    AddProject();
    ExpectRefusal({ "add", FProject }, 1, "Demo.dproj: it has been added before, with the ID 1");
    ExpectRefusal({ "add", FHome + "/none.dproj" }, 1, "none.dproj: the file does not exist");
    ExpectRefusal({ "set", "1", "--icon", FHome }, 1, ": it is a folder");
    ExpectRefusal({ "set", "1", "--launch", FHome + "/none.png" }, 1, "none.png: the file does not exist");
    const QString drawing = Home("drawing.svg");
    const std::string advice = "drawing.svg: it is an SVG file, which Corvadine does not read: export it as "
                               "PNG, 1024 x 1024 or larger";
    PutFile(drawing, "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>");
    PutFile(Home("Second.dproj"), "x");
    for (const char* option : { "--icon", "--launch" }) {
        ExpectRefusal({ "set", "1", option, drawing }, 1, advice);
        ExpectRefusal({ "add", Home("Second.dproj"), option, drawing }, 1, advice);
    }
    ExpectRefusal({ "set", "1", "--output", FIcon }, 1, "icon.png: it is a file");
    ExpectRefusal({ "show", "2" }, 1, "Cannot find the project 2: ");
    ExpectRefusal({ "show", "--", "--x=" }, 1, "Cannot find the project --x=: ");
    ExpectRefusal({ "remove", "a\nb.dproj" }, 1, "Cannot find the project a\\nb.dproj: ");

    ASSERT_EQ(Run({ "generate", "1" }).Status, 0);
    const QByteArray icon = FileBytes(FIcon);
    PutFile(FIcon, icon.left(icon.size() / 2));
    for (const char* command : { "plan", "generate" })
        ExpectRefusal({ command, "1" }, 1, "icon.png: ");
    EXPECT_THAT(Run({ "check", "1" }).Out,
        HasSubstr(FIcon.toStdString() + ": the icon image cannot be loaded (it is damaged or truncated"));
    // The decoders' own lines must not reach the error stream.
    EXPECT_THAT(RunProgram({ "generate", "1" }).Err, Matches("Cannot load the image [^\n]*\n"));
    PutFile(FIcon, icon);

    PutFile(FData + "/Project Backups", "in the way");
    ExpectRefusal({ "update", "1" }, 1, "the project file is unchanged");
    QFile::remove(FData + "/Project Backups");
    PutFile(FProject, "Demo");
    ExpectRefusal({ "update", "1", "--dry-run" }, 1, "Cannot read the project file ");
    ExpectRefusal({ "update", "1" }, 1, "Cannot read the project file ");
    QFile::remove(FProject);
    ExpectRefusal({ "update", "1" }, 1, "Demo.dproj: the file does not exist");
    SQLite::Database other((FData + "/Corvadine.db").toStdString(), SQLite::OPEN_READWRITE);
    other.exec("UPDATE Projects SET ResampleFilter=12");
    ExpectRefusal({ "plan", "1" }, 1, "Demo.dproj: the option \"Sampling Filter\" has the unknown value 12");
}

// Both project files are named Demo.dproj and are updated in the same second. Their backups must not get the
// same name.
TEST_F(TCliTest, GoesThroughSeveralProjectsAndPastFailures)
{
    const QString second = Home("copy/Demo.dproj");
    PutFile(second, FileBytes(FProject) + "\n");
    for (const QString& project : { FProject, second })
        ASSERT_EQ(Run({ "add", project, "--platforms", "windows" }).Status, 0);
    const QByteArray originals[] { FileBytes(FProject), FileBytes(second) };
    EXPECT_THAT(Run({ "generate", "--all" }).Err, HasSubstr("warning: project 2: No icon image is chosen"));
    EXPECT_EQ(Run({ "update", "--all" }).Status, 0);
    const QString backups = FData + "/Project Backups/Demo.";
    EXPECT_EQ(FileBytes(backups + "20240305140709.dproj"), originals[0]);
    EXPECT_EQ(FileBytes(backups + "20240305140710.dproj"), originals[1]);

    PutFile(FProject, FileBytes(FProject).replace("UWP_DelphiLogo44>", "Other>"));
    EXPECT_THAT(Run({ "update", "1" }).Out, // a new run in the same second
        Matches("[0-9]+ Entries updated, .* need to be set manually:\n  UWP_DelphiLogo44\n"
                "Nothing had to change, so no backup was made.\n"));
    EXPECT_EQ(FileBytes(backups + "20240305140709.dproj"), originals[0]);

    QFile::remove(FProject);
    const TOutcome outcome = Run({ "check", "1", "8", "2" });
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_THAT(outcome.Err, HasSubstr("project 1: Cannot read the project file "));
    EXPECT_THAT(outcome.Err, HasSubstr("project 8: Cannot find the project 8"));
    EXPECT_EQ(outcome.Out, "Project 2:\nOK\n");
    const QJsonArray projects = JsonIn(Run({ "check", "--all", "--json" }))["projects"].toArray();
    ASSERT_EQ(projects.size(), 2);
    EXPECT_FALSE(projects[0].toObject()["ok"].toBool());
    EXPECT_EQ(projects[1].toObject()["project"], second);
}

TEST_F(TCliTest, CheckNamesFilesAndLinesAndClearDeletesFilesOnly)
{
    AddProject();
    EXPECT_EQ(Run({ "clear", "1", "--yes" }).Out, "") << "there is no folder yet";
    ASSERT_EQ(Run({ "generate", "1" }).Status, 0);
    ASSERT_EQ(Run({ "update", "1" }).Status, 0);
    QFile::remove(FOutput + "/Icon_MainIcon.ico");
    PutFile(FProject, FileBytes(FProject).replace("\\Icon_MainIcon.ico", "\\other.ico"));
    const TOutcome outcome = Run({ "check", "1" });
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_THAT(outcome.Out,
        HasSubstr(Home("Demo/Corvadine/Icon_MainIcon.ico").toStdString() + ": the file does not exist\n"));
    EXPECT_THAT(outcome.Out,
        Matches(".*\n[^\n]*Demo.dproj:[0-9]+: Icon_MainIcon is '.*other.ico' instead of '.*"
                "Icon_MainIcon.ico'\n[0-9]+ findings\n"));

    for (const char* name : { "/kept/file", "/.hidden", "/no extension" })
        PutFile(FOutput + name, "x");
    ExpectRefusal({ "clear", "1" }, 2,
        "this would delete 4 files in it, 2 of them not made by Corvadine, which needs --yes");
    EXPECT_EQ(Run({ "clear", "1", "--yes" }).Out, "4 Images Deleted\n");
    EXPECT_EQ(FolderContent(FOutput), (TFolderContent { { "kept/file", "x" } }));
}

TEST_F(TCliTest, RefusesToDeleteOrOverwriteWhatTheUserNeeds)
{
    AddProject("iphone");
    const std::string warning = "can never be cleared: it is the folder of the project file\n";
    EXPECT_THAT(Run({ "set", "1", "--output", FHome }).Err, HasSubstr(warning));
    EXPECT_THAT(Run({ "plan", "1" }).Err, HasSubstr(warning));
    for (const QStringList& arguments : { QStringList { "clear", "1" }, { "clear", "1", "--yes" } })
        ExpectRefusal(
            arguments, 1, "Cannot delete the files in " + FHome.toStdString() + ": it is the folder");
    const QString second = Home("Second.dproj");
    PutFile(second, "x");
    EXPECT_THAT(Run({ "add", second, "--output", FData }).Err, HasSubstr("it is the program's own folder"));
    EXPECT_THAT(Run({ "--data", Home("other"), "add", second, "--output", Home("other") }).Err,
        HasSubstr("it is the folder of the project database"));
    ExpectRefusal({ "clear", "2", "--yes" }, 1, "it is the program's own folder");

    const QString source = Path("out/iOS_AppStore1024.png");
    PutFile(source, FileBytes(FIcon));
    ASSERT_EQ(Run({ "set", "1", "--icon", source, "--output", Path("out/") }).Status, 0);
    const std::string text = "Cannot generate " + source.toStdString()
        + ": this would overwrite the icon image " + source.toStdString();
    ExpectRefusal({ "generate", "1" }, 1, text);
    ExpectRefusal({ "plan", "1" }, 1, text);
}

TEST_F(TCliTest, CheckTellsStaleFromDamagedUnlessItIsAskedForTheFormOnly)
{
    AddProject();
    ASSERT_EQ(Run({ "generate", "1" }).Status, 0);
    ASSERT_EQ(Run({ "update", "1" }).Status, 0);
    ASSERT_EQ(Run({ "set", "1", "--compression", "1" }).Status, 0);
    EXPECT_EQ(Run({ "check", "1" }).Out, "OK\n");
    QImage icon(64, 64, QImage::Format_ARGB32);
    icon.fill(QColor(30, 30, 200, 128));
    icon.save(FIcon);
    EXPECT_EQ(Run({ "check", "1", "--form" }).Out, "OK\n");
    const QString cut = FOutput + "/UWP_DelphiLogo44.png";
    ASSERT_TRUE(QFile::resize(cut, QFileInfo(cut).size() - 1));
    const TOutcome outcome = Run({ "check", "1" });
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_THAT(outcome.Out,
        Matches("[^\n]*UWP_DelphiLogo44.png: damaged: the file is truncated\n"
                "[^\n]*UWP_DelphiLogo150.png: stale: 22500 of its 22500 pixels differ [^\n]*\n"
                "[^\n]*Icon_MainIcon.ico: stale: in its image of 16 x 16 pixels, 256 [^\n]*\n3 findings\n"));
    const QJsonObject json = JsonIn(Run({ "check", "1", "--json" }))["projects"][0].toObject();
    EXPECT_EQ(json["images"], 3);
    EXPECT_EQ(json["compared"], 3);
    const QJsonObject finding = json["findings"][1].toObject();
    EXPECT_EQ(finding["kind"], "stale");
    EXPECT_EQ(finding["id"], "UWP_DelphiLogo150");
    EXPECT_EQ(finding["path"], FOutput + QDir::separator() + "UWP_DelphiLogo150.png");
    EXPECT_TRUE(finding["text"].toString().startsWith("22500 of its"));
}

TEST_F(TCliTest, AFullDiskChangesNothing)
{
    if (!IsPosix())
        GTEST_SKIP();
    const auto runOnFullDisk = [this](const QStringList& arguments) {
        const TFileSizeLimit limit(1000);
        return RunProgram(arguments);
    };
    const auto untouched = Files();
    EXPECT_EQ(runOnFullDisk({ "add", FProject }).Status, 1);
    EXPECT_EQ(Files(), untouched) << "an empty database or new folders are left";
    AddProject();
    ASSERT_EQ(Run({ "generate", "1" }).Status, 0);
    ASSERT_EQ(Run({ "set", "1", "--filter", "none", "--platforms", "android,windows" }).Status, 0);
    const auto before = Files();
    for (const QStringList& arguments : std::vector<QStringList> {
             { "generate", "1" }, { "update", "1" }, { "set", "1", "--twox", "500" } }) {
        const TOutcome outcome = runOnFullDisk(arguments);
        EXPECT_EQ(outcome.Status, 1) << outcome.Out;
        EXPECT_THAT(outcome.Err, Matches("Cannot .*\n"));
        EXPECT_EQ(Files(), before) << outcome.Err;
    }
    const TOutcome list = RunProgram({ "list" }, "/dev/full");
    EXPECT_EQ(list.Status, 1);
    EXPECT_EQ(list.Err, "Cannot write the standard output: No space left on device\n");
}

TEST_F(TCliTest, AnInterruptedGenerationLeavesWholeFilesOnly)
{
    AddProject("all");
    ASSERT_EQ(RunProgram({ "generate", "1" }).Status, 0);
    for (const int milliseconds : { 20, 60, 120, 250 }) {
        const std::size_t count = Files().size();
        QProcess process;
        MakeKillable(process);
        process.start(QStringLiteral(CORVADINE_CLI), { "generate", "1", "--data", FData });
        process.waitForFinished(milliseconds);
        process.kill();
        process.waitForFinished(-1);
        EXPECT_LE(Files().size(), count + 1) << "more than the file that was just about to get its name";
        EXPECT_THAT(Run({ "check", "1", "--json" }).Out, ::testing::Not(HasSubstr("Corvadine/")));
    }
}

} // namespace
} // namespace Corvadine::Testing
