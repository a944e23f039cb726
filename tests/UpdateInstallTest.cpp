#include "support/InstallPlatform.h"
#include "support/StagedUpdate.h"
#include "support/UpdateInstaller.h"
#include "support/UpdateLog.h"
#include "tests/Testing.h"
#include "tests/TestingSystem.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QProcess>
#include <QThread>

#include <cstdlib>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

using TFiles = std::map<QString, QByteArray>;

const TFiles OldFiles { { "corvadine", "old program" }, { "docs/guide.txt", "old guide" },
    { "Corvadine.db", "projects" }, { "CorvadineBase.ini", "settings" } };
const TFiles NewFiles { { "corvadine", "new program, longer" }, { "docs/guide.txt", "new guide" },
    { "extra/deep/list.txt", "a file that is new" } };

} // namespace

class UpdateInstallTest : public TFolderTest {
protected:
    // The program folder as if never updated, and an update staged in it.
    TStagedUpdate Stage()
    {
        QDir(FProgram).removeRecursively();
        for (const auto& [name, bytes] : OldFiles)
            Put(FProgram + '/' + name, bytes);
        EXPECT_TRUE(QFile::setPermissions(
            Program(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ExeGroup));
        FPermissions = QFile::permissions(Program());
        TStagedUpdate update { StagingFolderOf(FProgram), "1.1.0", {} };
        for (const auto& [name, bytes] : NewFiles) {
            const QString staged = update.StagingFolder + "/files/" + name;
            Put(staged, bytes);
            update.Files.push_back(
                { name, staged, bytes.size(), QCryptographicHash::hash(bytes, QCryptographicHash::Sha256) });
        }
        return update;
    }

    static void Put(const QString& path, const QByteArray& bytes)
    {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        PutFile(path, bytes);
    }

    // What lies in the program folder but for the log and what outlasts an update.
    TFiles Files() const
    {
        TFiles files;
        const QDir program(FProgram);
        QDirIterator walk(
            FProgram, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            const QString name = program.relativeFilePath(walk.next());
            if (walk.fileInfo().isDir())
                EXPECT_FALSE(QDir(walk.filePath()).isEmpty()) << name.toStdString();
            else if (name != "WUPDATE.LOG" && name != "CorvadineUpdate.accepted")
                files.emplace(name, FileBytes(walk.filePath()));
        }
        return files;
    }

    static TFiles Updated()
    {
        TFiles files = OldFiles;
        for (const auto& [name, bytes] : NewFiles)
            files[name] = bytes;
        return files;
    }

    QString Program() const { return FProgram + "/corvadine"; }

    // Runs `action`, which gets an installer, in a process of its own that ends like a killed one before the
    // step number `deadly`. Returns whether it came to its end.
    template <typename TAction> bool SurvivesUntil(int deadly, const TAction& action) const
    {
        return SurvivesInCopy([&] {
            const TUpdateLog log(FProgram);
            TUpdateInstaller installer(FProgram, log);
            installer.BeforeStep = [&deadly](const QString&) {
                if (deadly-- == 0)
                    std::_Exit(9);
            };
            action(installer);
        });
    }

    const QString FProgram = Path("program");
    QFile::Permissions FPermissions; // of the program, as far as the system knows such
};

TEST_F(UpdateInstallTest, ReplacesAllFilesAndLeavesNothingBehind)
{
    const TStagedUpdate update = Stage();
    const TUpdateLog log(FProgram);
    const QString guide = FProgram + "/docs/guide.txt"; // becomes executable
    QFile::setPermissions(guide, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup);
    QFile::setPermissions(update.StagingFolder + "/files/docs/guide.txt",
        QFile::ReadOwner | QFile::ReadOther | QFile::ExeOwner);
    TUpdateInstaller(FProgram, log).Install(update, Program());
    EXPECT_EQ(Files(), Updated());
    EXPECT_EQ(QFile::permissions(Program()), FPermissions);
    const QString probe = Path("probe"); // as far as the system knows such permissions
    PutFile(probe, {});
    QFile::setPermissions(
        probe, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup | QFile::ExeGroup);
    EXPECT_EQ(QFile::permissions(guide), QFile::permissions(probe));
    EXPECT_EQ(FileBytes(FProgram + "/CorvadineUpdate.accepted"), "1.1.0\n");
    EXPECT_THAT(FileBytes(log.Path()).toStdString(),
        Matches("([0-9]{2}/[0-9]{2}/[0-9]{4} [0-9]{2}:[0-9]{2} [^\n]+: [^\n]+\n){5}"));
}

TEST_F(UpdateInstallTest, KilledAtAnyStepItIsTheOldOrTheNewProgram)
{
    if (!CanCopyProcess())
        GTEST_SKIP();
    for (int step = 0;; ++step) {
        const TStagedUpdate update = Stage();
        const bool survived =
            SurvivesUntil(step, [&](TUpdateInstaller& installer) { installer.Install(update, Program()); });
        EXPECT_TRUE(QFile::exists(Program())) << "nothing could be started after step " << step;
        if (survived)
            break;
        // The recovery is killed as well, each time one step later.
        const bool newProgramRuns = FileBytes(Program()) == NewFiles.at("corvadine");
        for (int second = 0; !SurvivesUntil(second, [](TUpdateInstaller& installer) { installer.Recover(); });
             ++second)
            ASSERT_EQ(FileBytes(Program()) == NewFiles.at("corvadine"), newProgramRuns)
                << "exchanged while it runs: step " << step << ", " << second;
        EXPECT_EQ(RecoverUpdate(FProgram), TRecovery::NotNeeded);
        QDir(update.StagingFolder).removeRecursively(); // as the next check does
        EXPECT_EQ(Files(), newProgramRuns ? Updated() : OldFiles) << "after step " << step;
    }
    EXPECT_EQ(Files(), Updated());
}

TEST_F(UpdateInstallTest, StartCompletesOrUndoesWhatWasCutOff)
{
    if (!CanCopyProcess())
        GTEST_SKIP();
    const auto cutOffBefore = [&](const QString& deadly, const QByteArray& laterGuide = {}) {
        const TStagedUpdate update = Stage();
        SurvivesUntil(-1, [&](TUpdateInstaller& installer) {
            installer.BeforeStep = [&](const QString& step) {
                if (step == deadly)
                    std::_Exit(9);
            };
            installer.Install(update, Program());
        });
        if (!laterGuide.isEmpty())
            PutFile(FProgram + "/docs/guide.txt", laterGuide);
        return RecoverUpdate(FProgram);
    };
    EXPECT_EQ(cutOffBefore("write the journal"), TRecovery::NotNeeded);
    EXPECT_EQ(cutOffBefore("move in corvadine"), TRecovery::Undone);
    EXPECT_EQ(cutOffBefore("settle the update"), TRecovery::Completed);
    EXPECT_EQ(cutOffBefore("remove the journal", "my guide"), TRecovery::Completed);
    EXPECT_EQ(FileBytes(FProgram + "/docs/guide.txt"), "my guide");
    EXPECT_EQ(FileBytes(Program()), NewFiles.at("corvadine"));
    EXPECT_EQ(FileBytes(FProgram + "/CorvadineUpdate.accepted"), "1.1.0\n");
    EXPECT_THAT(FileBytes(FProgram + "/WUPDATE.LOG").toStdString(), ::testing::HasSubstr("completed it"));

    Stage();
    Put(FProgram + "/CorvadineUpdate.old/journal", "{");
    EXPECT_THAT(ErrorOf([&] { RecoverUpdate(FProgram); }), ::testing::HasSubstr("install Corvadine anew"));
    EXPECT_EQ(RecoverUpdate(FProgram), TRecovery::NotNeeded) << "not at every start";
    EXPECT_EQ(FileBytes(FProgram + "/CorvadineUpdate.damaged/journal"), "{");
    EXPECT_THAT(FileBytes(FProgram + "/WUPDATE.LOG").toStdString(), ::testing::HasSubstr("failed. "));
}

TEST_F(UpdateInstallTest, NobodyCutsInWhileTheHelperTakesOver)
{
    using namespace std::chrono_literals;
    Stage();
    const QString lockFile = FProgram + "/CorvadineUpdate.lock";
    PutFile(lockFile, {}); // of a process that was killed, or of another computer
    EXPECT_EQ(RecoverUpdate(FProgram), TRecovery::NotNeeded);
    MarkHandedOver(FProgram);
    EXPECT_THAT(ErrorOf([&] { TUpdateLock lock(FProgram); }), ::testing::HasSubstr("CorvadineUpdate.lock"));
    EXPECT_EQ(RecoverUpdate(FProgram), TRecovery::BeingInstalled) << "about to be";
    QFile note(StagingFolderOf(FProgram) + "/handed-over");
    ASSERT_TRUE(note.open(QIODevice::ReadWrite));
    note.setFileTime(QDateTime::currentDateTime().addSecs(-90), QFile::FileModificationTime);
    note.close();
    {
        const TUpdateLock helper(FProgram, 1ms);
        EXPECT_EQ(RecoverUpdate(FProgram), TRecovery::BeingInstalled);
    }
    EXPECT_EQ(RecoverUpdate(FProgram), TRecovery::NotNeeded) << "the helper is gone for good";
    EXPECT_FALSE(QFile::exists(lockFile));
}

TEST_F(UpdateInstallTest, FailureAtAnyStepPutsAllBack)
{
    for (int failing = 0;; ++failing) {
        const TStagedUpdate update = Stage();
        // A system that lets nobody replace or remove files so marked must be talked round.
        Put(update.StagingFolder + "/files/left over", {});
        for (const QString& readOnly : { Program(), update.StagingFolder + "/files/left over" })
            ASSERT_TRUE(QFile::setPermissions(readOnly, QFile::ReadOwner | QFile::ExeOwner));
        FPermissions = QFile::permissions(Program());
        const TUpdateLog log(FProgram);
        TUpdateInstaller installer(FProgram, log);
        int count = 0;
        QString last;
        installer.BeforeStep = [&](const QString& step) {
            last = step;
            if (count++ == failing)
                throw TError(TErrorKind::Io, "the disk is on fire");
        };
        try {
            installer.Install(update, Program());
            break; // once it is settled it is installed, whatever fails
        } catch (const TError& error) {
            EXPECT_EQ(error.Text(), "the disk is on fire");
        }
        EXPECT_EQ(Files(), OldFiles) << last.toStdString();
        EXPECT_EQ(QFile::permissions(Program()), FPermissions) << last.toStdString();
    }
    EXPECT_EQ(RecoverUpdate(FProgram), TRecovery::Completed);
    EXPECT_EQ(Files(), Updated());
    EXPECT_EQ(QFile::permissions(Program()), FPermissions);
}

TEST_F(UpdateInstallTest, RefusesWhatIsNotAsItWasDownloaded)
{
    using TSpoil = std::function<void(TStagedUpdate&)>;
    std::optional<TFileSizeLimit> limit;
    std::vector<std::tuple<const char*, TSpoil, const char*>> cases {
        { "other bytes", [](auto& update) { PutFile(update.Files[1].StagedPath, "bad guide"); }, "guide" },
        { "longer", [](auto& update) { PutFile(update.Files[1].StagedPath, "new guide..."); }, "guide" },
        { "gone", [](auto& update) { QFile::remove(update.Files[0].StagedPath); }, "corvadine" },
        { "database", [](auto& update) { update.Files[0].Target = "Corvadine.db"; }, "Corvadine.db" },
        { "outside", [](auto& update) { update.Files[0].Target = "../corvadine"; }, "corvadine" },
        { "folder in the way",
            [this](auto&) {
                QFile::remove(Program());
                QDir().mkpath(Program() + "/x");
                PutFile(Program() + "/x/y", "kept");
            },
            "corvadine" },
    };
    if (CanLimitFileSize())
        cases.emplace_back(
            "full disk", [&](auto&) { limit.emplace(40); }, "journal");
    if (CanLinkFiles())
        cases.emplace_back(
            "target is a link",
            [this](auto&) {
                QFile::rename(Program(), FProgram + "/real");
                QFile::link("real", Program());
            },
            "link");
    for (const auto& [name, spoil, text] : cases) {
        TStagedUpdate update = Stage();
        spoil(update);
        QDir staging(update.StagingFolder);
        const QString log = FProgram + "/WUPDATE.LOG";
        const TUpdateLog updateLog(FProgram);
        TFiles files = Files();
        std::erase_if(files, [](const auto& file) { return file.first.startsWith("CorvadineUpdate."); });
        const std::string message =
            ErrorOf([&] { TUpdateInstaller(FProgram, updateLog).Install(update, Program()); });
        limit.reset();
        EXPECT_THAT(message, ::testing::HasSubstr(text)) << name;
        EXPECT_EQ(Files(), files) << name;
    }
}

TEST_F(UpdateInstallTest, LogStaysSmallAndItsLinesHonest)
{
    ASSERT_TRUE(QDir().mkpath(FProgram));
    const TUpdateLog log(FProgram);
    log.Write("Look for a newer version", "failed.\n01/01/2030 00:00 Install: done\r");
    EXPECT_EQ(FileBytes(log.Path()).count('\n'), 1);
    while (QFileInfo(log.Path()).size() <= TUpdateLog::LargestSize)
        log.Write("Replace a file", QString(900, 'x'));
    log.Write("Replace another file", "done");
    const QByteArray lines = FileBytes(log.Path());
    EXPECT_LT(lines.size(), TUpdateLog::LargestSize * 3 / 4);
    EXPECT_THAT(lines.left(3).toStdString(), Matches("[0-9]{2}/")) << "it starts in the middle of a line";
    EXPECT_TRUE(lines.trimmed().endsWith("Replace another file: done"));
}

TEST_F(UpdateInstallTest, NobodyElseGetsIntoAPrivateFolder)
{
    const QString folder = Path("private");
    ASSERT_FALSE(MakePrivateFolder(folder));
    PutFile(folder + "/a", "made by its owner");
    constexpr auto OfOthers = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther
        | QFile::WriteOther | QFile::ExeOther;
    if (CanLinkFiles()) { // elsewhere these are no rights
        EXPECT_EQ(QFile::permissions(folder) & OfOthers, 0);
    }
    EXPECT_TRUE(MakePrivateFolder(folder)) << "somebody might lie in wait with it";
}

// What the next test waits for.
TEST(UpdateInstallProcess, DISABLED_LastsAMoment)
{
    QThread::msleep(200);
}

TEST_F(UpdateInstallTest, WaitsForAProcessToEnd)
{
    using namespace std::chrono_literals;
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(),
        { "--gtest_also_run_disabled_tests", "--gtest_filter=*LastsAMoment" });
    ASSERT_TRUE(process.waitForStarted());
    const qint64 number = process.processId();
    const TOtherProcess other(number, QCoreApplication::applicationFilePath());
    EXPECT_FALSE(other.WaitForEnd(1ms));
    EXPECT_TRUE(other.WaitForEnd(20s));
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_TRUE(TOtherProcess(number, QCoreApplication::applicationFilePath()).WaitForEnd(0ms))
        << "it is gone";
}
