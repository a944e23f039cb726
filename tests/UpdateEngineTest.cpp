#include "support/UpdateEngine.h"

#include "support/AcceptedVersion.h"
#include "support/StagedUpdate.h"
#include "tests/Testing.h"
#include "tests/UpdateTesting.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::HasSubstr;

namespace {

class UpdateEngineTest : public TFolderTest {
protected:
    UpdateEngineTest() { PutOldFiles(Program()); }

    QString Program() const { return Path("Program"); }
    QString Program(const QString& name) const { return Program() + u'/' + name; }
    QString Staging() const { return StagingFolderOf(Program()); }
};

} // namespace

TEST_F(UpdateEngineTest, DownloadsWhatIsNewer)
{
    SetFileTime(Program("presets/colours.txt"), QDateTime({ 2019, 1, 1 }, { 0, 0 }, Qt::UTC));
    const auto before = ContentOf(Program());
    for (const char* archive : { "cab", "zip", "none" }) {
        SCOPED_TRACE(archive);
        TUpdateServer server;
        const TUpdateRelease release = MakeRelease("1.1.0",
            { "--archive", QString::fromLatin1(archive), "--by-version", "corvadine", "--by-date",
                "presets/*", "--optional", "*.chm", "--describe", "*.chm=The help, 100 % new" });
        release.PutOn(server);
        TUpdateEngine engine(TestUpdateSettings(server, Program()));

        const auto items = RunCheck(engine).Items;
        ASSERT_EQ(items.size(), 3);
        EXPECT_EQ(items[0].Name, u"Corvadine.chm");
        EXPECT_EQ(items[0].Description, u"The help, 100 % new");
        EXPECT_EQ(items[0].Date, QDateTime({ 2020, 11, 22 }, { 14, 30 }, Qt::UTC));
        EXPECT_EQ(items[0].Size, NewHelp.size());
        EXPECT_EQ(items[0].Version, u"1.1.0");
        EXPECT_FALSE(items[0].Mandatory);
        EXPECT_TRUE(items[1].Mandatory && items[2].Mandatory);
        EXPECT_TRUE(ContentOf(Program()) == before);
        EXPECT_TRUE(server.Requests().first().contains("User-Agent: TWebUpdate\r\n"));

        // The mandatory ones come along.
        const TUpdateOutcome outcome = RunDownload(engine, {});
        ASSERT_EQ(outcome.Signal, u"Downloaded") << outcome.Text.toStdString();
        EXPECT_EQ(outcome.Update.Version, u"1.1.0");
        EXPECT_EQ(outcome.LastDone, outcome.Total);
        ASSERT_EQ(outcome.Update.Files.size(), 2);
        const TStagedUpdateFile& program = outcome.Update.Files[0];
        EXPECT_EQ(program.Target, u"corvadine");
        EXPECT_EQ(FileBytes(program.StagedPath), NewProgram());
        EXPECT_TRUE(QFileInfo(program.StagedPath).isExecutable());
        EXPECT_EQ(FileBytes(outcome.Update.Files[1].StagedPath), NewPresets);
        EXPECT_FALSE(QFileInfo(outcome.Update.Files[1].StagedPath).isExecutable());
        EXPECT_EQ(QFileInfo(outcome.Update.Files[1].StagedPath).lastModified(), items[2].Date);
        EXPECT_EQ(QFileInfo(Staging()).permissions() & (QFile::ReadGroup | QFile::ReadOther), 0);
        EXPECT_EQ(FileBytes(Program("corvadine")), "old program");
    }
}

// The limits are on silence, and on a line too slow for the size.
TEST_F(UpdateEngineTest, ASlowDownloadIsNotAStalledOne)
{
    TUpdateServer server;
    TUpdateSettings settings = TestUpdateSettings(server, Program());
    settings.Limits.Stall = std::chrono::milliseconds(900);
    settings.Limits.DownloadTotal = std::chrono::milliseconds(100);
    settings.Limits.LeastRate = Release().Package().size() / 10;
    Release().PutOn(server);
    TAnswer slow = Ok(Release().Package());
    slow.DripMilliseconds = 120; // ten times
    server.Put(PackageUrlPath, slow);
    TUpdateEngine engine(settings);
    ASSERT_EQ(RunCheck(engine).Items.size(), 3);
    EXPECT_EQ(RunDownload(engine, { 0 }).Signal, u"Downloaded");
}

TEST_F(UpdateEngineTest, AReleaseIsTheSameBytesWheneverItIsMade)
{
    const QStringList archives { "cab", "zip" };
    for (const QString& archive : archives)
        EXPECT_TRUE(MakeRelease("1.1.0", { "--archive", archive }).Files
            == MakeRelease("1.1.0", { "--archive", archive }).Files);
}

TEST_F(UpdateEngineTest, NothingIsPublishedThatEveryCopyWouldRefuse)
{
    const auto refusal = [](const QStringList& emptyFiles, const QStringList& arguments = {}) {
        const QTemporaryDir folder;
        for (const QString& name : emptyFiles)
            PutFile(folder.filePath(name), {});
        QByteArray error;
        const TUpdateRelease release(folder.path(), "1.1.0", arguments, &error);
        return error.toStdString();
    };
    for (const char* name : { "nul.txt", "sub/COM1", "a.", "a /b", "a:b", "PROJEC~1", "a/b/c/d/e/f/g/h/i" })
        EXPECT_THAT(refusal({ name }), HasSubstr("could not be installed everywhere")) << name;
    EXPECT_THAT(refusal({ "Corvadine.DB-wal" }), HasSubstr("belongs to the user"));
    EXPECT_THAT(refusal({ "sub/a", "Sub/A" }), HasSubstr("case does not matter"));
    EXPECT_THAT(refusal({ "sub/a", "Sub" }), HasSubstr("case does not matter"));
    EXPECT_THAT(refusal({ "a" }, { "--archive", "none" }), HasSubstr("0 bytes in Corvadine-a"));
    EXPECT_THAT(refusal({ "a" }, { "--describe", "a=" + QString(501, u'x') }), HasSubstr("500 characters"));
    EXPECT_THAT(refusal({ "a" }, { "--files", "linux=." }), HasSubstr("no platform 'linux'"));
    for (const char* days : { "0", "-1", "99999999999" })
        EXPECT_THAT(refusal({ "a" }, { "--days", days }), HasSubstr("days")) << days;
}

TEST_F(UpdateEngineTest, FindsNothingNewer)
{
    TUpdateServer server;
    const TUpdateRelease release = Release();
    release.PutOn(server);
    const TUpdateSettings settings = TestUpdateSettings(server, Program());
    const auto newer = [&](const TUpdateSettings& with) {
        TUpdateEngine engine(with);
        const TUpdateOutcome outcome = RunCheck(engine);
        EXPECT_EQ(outcome.Signal, u"Checked") << outcome.Text.toStdString();
        return outcome.Items.size();
    };
    EXPECT_EQ(newer(settings), 3);

    TUpdateRelease foreign = release;
    foreign.Replace("compare=", "platform=windows-x86_64\r\ncompare=");
    foreign.Sign();
    foreign.PutOn(server);
    EXPECT_EQ(newer(settings), 0) << "another platform's files";

    // What has the right bytes or is younger is left alone, file by file.
    TUpdateRelease byDate = release;
    byDate.Replace("compare=version", "compare=date");
    byDate.Sign();
    byDate.PutOn(server);
    PutFile(Program("Corvadine.chm"), NewHelp);
    EXPECT_EQ(newer(settings), 1);

    release.PutOn(server);
    RecordAcceptedVersion(Program(), "1.1.0");
    PutFile(Program("presets/colours.txt"), NewPresets);
    EXPECT_EQ(newer(settings), 0) << "installed before";
    PutFile(Program("Corvadine.chm"), "damaged");
    QFile::remove(Program("corvadine"));
    EXPECT_EQ(newer(settings), 2) << "to be repaired";
    PutFile(Program("CorvadineUpdate.accepted"), QByteArray(1000, '9'));
    EXPECT_EQ(newer(settings), 2) << "a record that is rubbish locks nobody out";

    TUpdateRelease withdrawn = release;
    withdrawn.Renew({ "--date", "23/11/2020 14:30", "--days", "36500", "--withdraw" });
    withdrawn.PutOn(server);
    EXPECT_EQ(newer(settings), 0) << "a withdrawn release";
    release.PutOn(server);
    TUpdateEngine engine(settings);
    EXPECT_THAT(RunCheck(engine).Text.toStdString(), HasSubstr("has withdrawn")) << "not for long";
}

TEST_F(UpdateEngineTest, CanBeCancelledAtEveryStep)
{
    TUpdateServer server;
    Release().PutOn(server);
    const auto before = ContentOf(Program());
    TUpdateEngine engine(TestUpdateSettings(server, Program()));
    engine.Cancel(); // nothing runs
    engine.Check();
    engine.Cancel();
    engine.Cancel();
    EXPECT_EQ(AwaitOutcome(engine).Signal, u"Cancelled");

    ASSERT_EQ(RunCheck(engine).Items.size(), 3);
    // From within the engine's own signal, in the middle of the package.
    server.Put(PackageUrlPath, { OkHeaders + Release().Package().left(100'000), TThen::Stall });
    QObject context;
    QObject::connect(&engine, &TUpdateEngine::Progress, &context, [&] {
        EXPECT_TRUE(QFileInfo::exists(Staging()));
        engine.Cancel();
    });
    EXPECT_EQ(RunDownload(engine, { 0 }).Signal, u"Cancelled");
    EXPECT_FALSE(QFileInfo::exists(Staging()));
    EXPECT_TRUE(ContentOf(Program()) == before);

    // An engine that goes takes its download along.
    QObject::disconnect(&engine, nullptr, &context, nullptr);
    {
        TUpdateEngine shortLived(TestUpdateSettings(server, Program()));
        ASSERT_EQ(RunCheck(shortLived).Items.size(), 3);
        QEventLoop loop;
        QObject::connect(&shortLived, &TUpdateEngine::Progress, &loop, &QEventLoop::quit);
        shortLived.Download({ 0 });
        loop.exec();
        EXPECT_TRUE(QFileInfo::exists(Staging()));
    }
    EXPECT_FALSE(QFileInfo::exists(Staging()));
}

TEST_F(UpdateEngineTest, RemovesLeftoversUnlessSomebodyIsAtWork)
{
    TUpdateServer server;
    Release().PutOn(server);
    TUpdateEngine engine(TestUpdateSettings(server, Program()));
    PutFile(Staging() + "/files/file", {});
    QFile::link(Program(), Staging() + "/files/link");
    {
        const TUpdateLock lock(Program());
        ASSERT_EQ(RunCheck(engine).Items.size(), 3);
        EXPECT_TRUE(QFileInfo::exists(Staging()));
        EXPECT_THAT(RunDownload(engine, { 0 }).Text.toStdString(), HasSubstr("Another copy of Corvadine"));
        EXPECT_TRUE(QFileInfo::exists(Staging()));
    }
    ASSERT_EQ(RunCheck(engine).Items.size(), 3);
    EXPECT_FALSE(QFileInfo::exists(Staging()));
    EXPECT_EQ(FileBytes(Program("Corvadine.db")), "database");

    ASSERT_EQ(RunDownload(engine, { 0 }).Signal, u"Downloaded");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_THAT(ErrorOf([&] { const TUpdateLock lock(Program()); }), HasSubstr("Another copy of Corvadine"));
    if (QStorageInfo(QStringLiteral("/sys")).fileSystemType() == "sysfs") { // where not even root makes files
        EXPECT_THAT(
            ErrorOf([] { const TUpdateLock lock("/sys"); }), HasSubstr("the folder cannot be written"));
    }
}

TEST_F(UpdateEngineTest, AStagedUpdateIsTrustedForWhatItIs)
{
    TUpdateServer server;
    Release().PutOn(server);
    TUpdateSettings settings = TestUpdateSettings(server, Program());
    TUpdateEngine engine(settings);
    ASSERT_EQ(RunCheck(engine).Items.size(), 3);
    const TUpdateOutcome outcome = RunDownload(engine, { 0, 1, 2 });
    ASSERT_EQ(outcome.Signal, u"Downloaded");
    const QString help = outcome.Update.Files[0].StagedPath;
    const auto error = [&] { return ErrorOf([&] { ReadStagedUpdate(settings); }); };
    ASSERT_EQ(ReadStagedUpdate(settings).Files.size(), 3);

    PutFile(help, QByteArray(NewHelp.size(), 'x'));
    EXPECT_THAT(error(), HasSubstr("not the file that the publisher released"));
    QFile::remove(help);
    QFile::link(outcome.Update.Files[1].StagedPath, help);
    EXPECT_THAT(error(), HasSubstr("it is a link"));
    QFile::remove(help);
    EXPECT_THAT(error(), HasSubstr("not complete")) << "it was chosen";
    PutFile(help + u'x', NewHelp);
    EXPECT_THAT(error(), HasSubstr("does not name it"));
    QFile::remove(help + u'x');

    PutFile(help, NewHelp);
    settings.InstalledVersion = "1.1.0";
    EXPECT_EQ(ReadStagedUpdate(settings).Files.size(), 3) << "a repair";
    settings.InstalledVersion = "1.1.1";
    EXPECT_THAT(error(), HasSubstr("older than version 1.1.1"));
    settings.InstalledVersion = "1.0.0";
    PutFile(Staging() + "/chosen", "corvadine");
    EXPECT_THAT(error(), HasSubstr("not complete")) << "less was chosen";
    QDir(Staging() + "/files").removeRecursively();
    EXPECT_THAT(error(), HasSubstr("not complete"));
    const QString control = Staging() + "/Corvadine.INF";
    PutFile(control, FileBytes(control) + ";\r\n");
    EXPECT_THAT(error(), HasSubstr("is not signed"));
}
