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
#include <QFileInfo>
#include <QProcess>

#include <cstdlib>
#include <optional>
#include <tuple>
#include <vector>

using namespace Corvadine;
using namespace Corvadine::Testing;
using namespace std::chrono_literals;
using ::testing::HasSubstr;

namespace {

const TFolderContent OldFiles { { "corvadine", "old program" }, { "docs/guide.txt", "old guide" },
    { "Corvadine.db", "projects" }, { "CorvadineBase.ini", "settings" } };
const TFolderContent NewFiles { { "corvadine", "new program, longer" }, { "docs/guide.txt", "new guide" },
    { "extra/deep/list.txt", "a file that is new" } };

} // namespace

class UpdateInstallTest : public TFolderTest {
protected:
    // The program folder as if never updated, and an update staged in it.
    TStagedUpdate Stage()
    {
        QDir(FProgram).removeRecursively();
        for (const auto& [name, bytes] : OldFiles)
            PutFile(FProgram + '/' + name, bytes);
        EXPECT_TRUE(QFile::setPermissions(
            Program(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ExeGroup));
        FPermissions = QFile::permissions(Program());
        TStagedUpdate update { StagingFolderOf(FProgram), "1.1.0", {} };
        for (const auto& [name, bytes] : NewFiles) {
            const QString staged = update.StagingFolder + "/files/" + name;
            PutFile(staged, bytes);
            update.Files.push_back(
                { name, staged, bytes.size(), QCryptographicHash::hash(bytes, QCryptographicHash::Sha256) });
        }
        return update;
    }

    // What lies in the program folder but for the log and what outlasts an update.
    TFolderContent Files() const
    {
        return FolderContent(FProgram, { "WUPDATE.LOG", "CorvadineUpdate.accepted" });
    }

    static TFolderContent Updated()
    {
        TFolderContent files = OldFiles;
        for (const auto& [name, bytes] : NewFiles)
            files[name] = bytes;
        return files;
    }

    QString Program() const { return FProgram + "/corvadine"; }

    // Runs `action`, which gets an installer, in a process of its own that ends like a killed one before the
    // first deadly step. Returns whether it came to its end.
    template <typename TAction>
    bool Survives(const std::function<bool(const QString&)>& isDeadly, const TAction& action) const
    {
        return SurvivesInCopy([&] {
            const TUpdateLog log(FProgram);
            TUpdateInstaller installer(FProgram, log);
            installer.BeforeStep = [&isDeadly](const QString& step) {
                if (isDeadly(step))
                    std::_Exit(9);
            };
            action(installer);
        });
    }

    static std::function<bool(const QString&)> Number(int step)
    {
        return [step](const QString&) mutable { return step-- == 0; };
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
    if (!IsPosix())
        GTEST_SKIP();
    for (int step = 0;; ++step) {
        const TStagedUpdate update = Stage();
        const bool survived = Survives(
            Number(step), [&](TUpdateInstaller& installer) { installer.Install(update, Program()); });
        EXPECT_TRUE(QFile::exists(Program())) << "nothing could be started after step " << step;
        if (survived)
            break;
        // The recovery is killed as well, each time one step later.
        const bool newProgramRuns = FileBytes(Program()) == NewFiles.at("corvadine");
        for (int second = 0;
             !Survives(Number(second), [](TUpdateInstaller& installer) { installer.Recover(); }); ++second)
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
    if (!IsPosix())
        GTEST_SKIP();
    const auto cutOffBefore = [&](const QString& deadly, const QByteArray& laterGuide = {}) {
        const TStagedUpdate update = Stage();
        Survives([&](const QString& step) { return step == deadly; },
            [&](TUpdateInstaller& installer) { installer.Install(update, Program()); });
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
    EXPECT_THAT(FileBytes(FProgram + "/WUPDATE.LOG").toStdString(), HasSubstr("completed it"));

    Stage();
    PutFile(FProgram + "/CorvadineUpdate.old/journal", "{");
    EXPECT_THAT(ErrorOf([&] { RecoverUpdate(FProgram); }), HasSubstr("install Corvadine anew"));
    EXPECT_EQ(RecoverUpdate(FProgram), TRecovery::NotNeeded) << "not at every start";
    EXPECT_EQ(FileBytes(FProgram + "/CorvadineUpdate.damaged/journal"), "{");
    EXPECT_THAT(FileBytes(FProgram + "/WUPDATE.LOG").toStdString(), HasSubstr("failed. "));
}

TEST_F(UpdateInstallTest, NobodyCutsInWhileTheHelperTakesOver)
{
    Stage();
    const QString lockFile = FProgram + "/CorvadineUpdate.lock";
    PutFile(lockFile, {}); // of a process that was killed, or of another computer
    EXPECT_EQ(RecoverUpdate(FProgram), TRecovery::NotNeeded);
    MarkHandedOver(FProgram);
    EXPECT_THAT(ErrorOf([&] { TUpdateLock lock(FProgram); }), HasSubstr("CorvadineUpdate.lock"));
    EXPECT_EQ(RecoverUpdate(FProgram), TRecovery::BeingInstalled) << "about to be";
    SetFileTime(StagingFolderOf(FProgram) + "/handed-over", QDateTime::currentDateTime().addSecs(-90));
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
        PutFile(update.StagingFolder + "/files/left over", {});
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
                PutFile(Program() + "/x/y", "kept");
            },
            "corvadine" },
    };
    if (IsPosix()) {
        cases.emplace_back(
            "full disk", [&](auto&) { limit.emplace(40); }, "journal");
        cases.emplace_back(
            "target is a link",
            [this](auto&) {
                QFile::rename(Program(), FProgram + "/real");
                QFile::link("real", Program());
            },
            "link");
    }
    for (const auto& [name, spoil, text] : cases) {
        TStagedUpdate update = Stage();
        spoil(update);
        const TUpdateLog updateLog(FProgram);
        TFolderContent files = Files();
        std::erase_if(files, [](const auto& file) { return file.first.startsWith("CorvadineUpdate."); });
        const std::string message =
            ErrorOf([&] { TUpdateInstaller(FProgram, updateLog).Install(update, Program()); });
        limit.reset();
        EXPECT_THAT(message, HasSubstr(text)) << name;
        EXPECT_EQ(Files(), files) << name;
    }
}

TEST_F(UpdateInstallTest, LogStaysSmallAndItsLinesHonest)
{
    QDir().mkpath(FProgram);
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
    if (IsPosix()) { // elsewhere these are no rights
        EXPECT_EQ(QFile::permissions(folder) & OfOthers, 0);
    }
    EXPECT_TRUE(MakePrivateFolder(folder)) << "somebody might lie in wait with it";
}

TEST_F(UpdateInstallTest, WaitsForAProcessToEnd)
{
    const QString program = QCoreApplication::applicationFilePath();
    EXPECT_FALSE(TOtherProcess(QCoreApplication::applicationPid(), program).WaitForEnd(1ms));
    QProcess process;
    process.start(program, { "--gtest_list_tests" });
    ASSERT_TRUE(process.waitForStarted());
    const qint64 number = process.processId();
    EXPECT_TRUE(TOtherProcess(number, program).WaitForEnd(20s));
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_TRUE(TOtherProcess(number, program).WaitForEnd(0ms)) << "it is gone";
}
