#include "tests/UpdateTesting.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFileInfo>
#include <QStorageInfo>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::HasSubstr;

namespace {

const QString Help = u"Corvadine.chm"_s;
const QString Presets = u"presets/colors.txt"_s;

} // namespace

class UpdateEngineTest : public TFolderTest {
protected:
    UpdateEngineTest()
    {
        PutOldFiles(FFolder.Path());
        Release().PutOn(FServer);
    }

    QString Program(const QString& name) const { return FFolder.PathOf(name); }
    bool IsStaged() const { return QFileInfo::exists(FFolder.Staging()); }

    // Returns how many newer files a check finds when `release` is on the server.
    std::size_t Newer(const TUpdateRelease& release)
    {
        release.PutOn(FServer);
        TUpdateEngine engine(FSettings);
        const TUpdateOutcome outcome = RunCheck(engine);
        EXPECT_EQ(outcome.Signal, u"Checked") << outcome.Text.toStdString();
        return outcome.Files.size();
    }

    // Runs make-update on empty files with the names `files`. make-update must refuse them. Returns its
    // error.
    static std::string Refusal(const QStringList& files, const QStringList& arguments = {})
    {
        TFolderContent content;
        for (const QString& name : files)
            content[name];
        QByteArray error;
        const TUpdateRelease release(content, arguments, &error);
        EXPECT_TRUE(release.Files.empty()) << error.toStdString();
        EXPECT_TRUE(error.count('\n') == 1 || error.startsWith("usage: ")) << error.toStdString();
        return error.toStdString();
    }

    const TUpdateFolder FFolder { Path("Program") };
    TUpdateServer FServer;
    TUpdateSettings FSettings = TestUpdateSettings(FServer, FFolder.Path());
};

TEST_F(UpdateEngineTest, DownloadsWhatIsNewer)
{
    SetFileTime(Program(Presets), QDateTime({ 2019, 1, 1 }, { 0, 0 }, Qt::UTC));
    for (const char* archive : { "cab", "zip", "none" }) {
        SCOPED_TRACE(archive);
        const QStringList arguments { "--archive", archive, "--by-version", "corvadine", "--by-date",
            "presets/*", "--optional", "*.chm", "--describe", "*.chm=The help, 100 % new" };
        const TUpdateRelease release = MakeRelease(arguments);
        EXPECT_TRUE(release.Files == MakeRelease(arguments).Files) << "made again";
        release.PutOn(FServer);
        TUpdateEngine engine(FSettings);
        const auto files = RunCheck(engine).Files;
        ASSERT_EQ(files.size(), 3);
        EXPECT_EQ(files[0].Target, Help);
        EXPECT_EQ(files[0].Description, u"The help, 100 % new");
        EXPECT_EQ(files[0].Date, QDateTime({ 2020, 11, 22 }, { 14, 30 }, Qt::UTC));
        EXPECT_TRUE(!files[0].Mandatory && files[1].Mandatory && files[2].Mandatory);

        // The mandatory files are downloaded, although no file is chosen.
        const TUpdateOutcome outcome = RunDownload(engine, {});
        ASSERT_EQ(outcome.Signal, u"Downloaded") << outcome.Text.toStdString();
        EXPECT_EQ(outcome.LastDone, outcome.Total);
        EXPECT_EQ(ReadStagedUpdate(FSettings).Files.size(), 2);
        const QFileInfo program(FFolder.StagedPath("corvadine"));
        const QFileInfo presets(FFolder.StagedPath(Presets));
        EXPECT_EQ(FileBytes(program.filePath()), NewProgram());
        EXPECT_EQ(FileBytes(presets.filePath()), NewPresets);
        EXPECT_TRUE(program.isExecutable() && !presets.isExecutable());
        EXPECT_EQ(presets.lastModified(), files[2].Date);
        EXPECT_EQ(QFileInfo(FFolder.Staging()).permissions() & (QFile::ReadGroup | QFile::ReadOther), 0);
    }
}

// The limits stop a server that is silent, and a line that is too slow for the size of the download.
TEST_F(UpdateEngineTest, ASlowDownloadIsNotAStalledOne)
{
    FSettings.Limits.Stall = std::chrono::milliseconds(900);
    FSettings.Limits.DownloadTotal = std::chrono::milliseconds(100);
    FSettings.Limits.LeastRate = Release().Package().size() / 10;
    TAnswer slow = Ok(Release().Package());
    slow.DripMilliseconds = 120; // after each of ten pieces
    FServer.Put(PackageUrlPath, slow);
    TUpdateEngine engine(FSettings);
    EXPECT_EQ(RunDownload(engine, { 0 }).Signal, u"Downloaded");
}

TEST_F(UpdateEngineTest, NothingIsPublishedThatEveryCopyWouldRefuse)
{
    EXPECT_THAT(Refusal({ "nul.txt" }), HasSubstr("it names a device"));
    EXPECT_THAT(Refusal({ "Corvadine.DB-wal" }), HasSubstr("must not touch this file"));
    EXPECT_THAT(Refusal({ "sub/a", "Sub" }), HasSubstr("cannot both be installed"));
    EXPECT_THAT(Refusal({ "a\nb" }), HasSubstr("a line break"));
    EXPECT_THAT(Refusal({ "a" }, { "--archive", "none" }), HasSubstr("\"newsize\" in [package1]"));
    EXPECT_THAT(Refusal({ "a" }, { "--files", Program("presets") }), HasSubstr("two packages are called"));
    EXPECT_THAT(Refusal({ "a" }, { "--describe", "a=" + QString(501, u'x') }), HasSubstr("\"descr\""));
    EXPECT_THAT(Refusal({ "a" }, { "--by-version", "a", "--optional", "a" }), HasSubstr("by version"));
    EXPECT_THAT(Refusal({ "a" }, { "--oldest", "1" }), HasSubstr("\"localversion\""));
    EXPECT_THAT(Refusal({ "a" }, { "--files", "linux=." }), HasSubstr("no platform 'linux'"));
    EXPECT_THAT(Refusal({ "a" }, { "--checker", "/none" }), HasSubstr("there is no /none"));
    for (const char* days : { "0", "-1", "99999999999" })
        EXPECT_THAT(Refusal({ "a" }, { "--days", days }), HasSubstr("days")) << days;

    TUpdateRelease release = Release();
    release.Package().append('x');
    EXPECT_THAT(release.Faults(), HasSubstr("Corvadine.CAB: it is not the file"));
    release.Control().append(";\r\n");
    EXPECT_THAT(release.Faults(), HasSubstr("is not signed"));
}

TEST_F(UpdateEngineTest, FindsNothingNewer)
{
    EXPECT_EQ(Newer(Release()), 3);
    TUpdateRelease foreign = Release();
    foreign.Replace("compare=", "platform=windows-x86_64\r\ncompare=");
    EXPECT_EQ(Newer(foreign), 0) << "another platform's files";

    // A file is left alone if it has the right bytes or is younger than the file of the release. Each file is
    // compared by itself.
    TUpdateRelease byDate = Release();
    byDate.Replace("compare=version", "compare=date");
    PutFile(Program(Help), NewHelp);
    EXPECT_EQ(Newer(byDate), 1);

    FFolder.RecordAcceptedVersion("1.1.0");
    PutFile(Program(Presets), NewPresets);
    EXPECT_EQ(Newer(Release()), 0) << "installed before";
    PutFile(Program(Help), "damaged");
    QFile::remove(Program("corvadine"));
    EXPECT_EQ(Newer(Release()), 2) << "to be repaired";

    TUpdateRelease withdrawn = Release();
    withdrawn.Withdraw();
    EXPECT_EQ(Newer(withdrawn), 0) << "a withdrawn release";
    Release().PutOn(FServer);
    TUpdateEngine engine(FSettings);
    EXPECT_THAT(RunCheck(engine).Text.toStdString(), HasSubstr("has withdrawn")) << "not for long";
}

TEST_F(UpdateEngineTest, CanBeCancelledAtEveryStep)
{
    const auto before = ContentOf(FFolder.Path());
    {
        TUpdateEngine engine(FSettings);
        engine.Cancel(); // nothing runs
        engine.Check();
        engine.Cancel();
        engine.Cancel();
        EXPECT_EQ(AwaitOutcome(engine).Signal, u"Cancelled");

        // Cancels from within a signal of the engine, in the middle of the package.
        FServer.Put(PackageUrlPath, { OkHeaders + Release().Package().left(100'000), TThen::Stall });
        QObject::connect(&engine, &TUpdateEngine::Progress, &engine, [&] {
            EXPECT_TRUE(IsStaged());
            engine.Cancel();
        });
        EXPECT_EQ(RunDownload(engine, { 0 }).Signal, u"Cancelled");
        EXPECT_TRUE(ContentOf(FFolder.Path()) == before);
    }
    // An engine that is destroyed removes its download.
    {
        TUpdateEngine engine(FSettings);
        ASSERT_EQ(RunCheck(engine).Files.size(), 3);
        QEventLoop loop;
        QObject::connect(&engine, &TUpdateEngine::Progress, &loop, &QEventLoop::quit);
        engine.Download({ 0 });
        loop.exec();
        EXPECT_TRUE(IsStaged());
    }
    EXPECT_FALSE(IsStaged());
}

TEST_F(UpdateEngineTest, RemovesLeftoversUnlessAnotherProcessIsAtWork)
{
    const std::string busy = "Another copy of Corvadine";
    TUpdateEngine engine(FSettings);
    PutFile(FFolder.StagedPath("file"), {});
    QFile::link(FFolder.Path(), FFolder.StagedPath("link"));
    {
        const TUpdateLock lock = FFolder.Lock();
        EXPECT_THAT(RunDownload(engine, { 0 }).Text.toStdString(), HasSubstr(busy));
        EXPECT_TRUE(IsStaged());
    }
    ASSERT_EQ(RunCheck(engine).Files.size(), 3);
    EXPECT_FALSE(IsStaged());
    EXPECT_EQ(FileBytes(Program("Corvadine.db")), "database");

    ASSERT_EQ(RunDownload(engine, { 0 }).Signal, u"Downloaded");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_THAT(ErrorOf([&] { FFolder.Lock(); }), HasSubstr(busy));
    if (QStorageInfo(u"/sys"_s).fileSystemType() == "sysfs") { // not even root can make files in /sys
        EXPECT_THAT(ErrorOf([] { TUpdateFolder("/sys").Lock(); }), HasSubstr("the folder cannot be written"));
    }
}

TEST_F(UpdateEngineTest, AStagedUpdateIsTrustedForWhatItIs)
{
    TUpdateEngine engine(FSettings);
    ASSERT_EQ(RunDownload(engine, { 0, 1, 2 }).Signal, u"Downloaded");
    const QString help = FFolder.StagedPath(Help);
    const QString control = FFolder.Staging() + "/Corvadine.INF";
    const auto error = [&] { return ErrorOf([&] { ReadStagedUpdate(FSettings); }); };
    FSettings.InstalledVersion = { 1, 1 };
    ASSERT_EQ(ReadStagedUpdate(FSettings).Files.size(), 3) << "a repair";

    PutFile(help, QByteArray(NewHelp.size(), 'x'));
    EXPECT_THAT(error(), HasSubstr("not the file that the publisher released"));
    QFile::remove(help);
    QFile::link(FFolder.StagedPath("corvadine"), help);
    EXPECT_THAT(error(), HasSubstr("it is a link"));
    QFile::remove(help);
    EXPECT_THAT(error(), HasSubstr("not complete")) << "it was chosen";
    PutFile(help + u'x', NewHelp);
    EXPECT_THAT(error(), HasSubstr("does not name it"));
    QFile::rename(help + u'x', help);
    PutFile(FFolder.Staging() + "/chosen", "corvadine");
    EXPECT_THAT(error(), HasSubstr("not complete")) << "less was chosen";
    QDir(FFolder.StagedFiles()).removeRecursively();
    EXPECT_THAT(error(), HasSubstr("not complete"));
    FSettings.InstalledVersion = { 1, 1, 1 };
    EXPECT_THAT(error(), HasSubstr("older than version 1.1.1"));
    PutFile(control, FileBytes(control) + ";\r\n");
    EXPECT_THAT(error(), HasSubstr("is not signed"));
}
