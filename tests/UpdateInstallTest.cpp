#include "support/update/rules/InstallPlatform.h"
#include "support/update/rules/UpdateInstaller.h"
#include "tests/Testing.h"
#include "tests/TestingSystem.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFileInfo>
#include <QProcess>

#include <cstdlib>
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
    // Makes a program folder that was never updated, and stages an update in the folder. Returns the update.
    TStagedUpdate Stage()
    {
        QDir(FFolder.Path()).removeRecursively();
        for (const auto& [name, bytes] : OldFiles)
            PutFile(FFolder.PathOf(name), bytes);
        FPermissions = PermissionsOnceSet(
            Program(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ExeGroup);
        TStagedUpdate update { "1.1.0", {} };
        for (const auto& [name, bytes] : NewFiles) {
            PutFile(FFolder.StagedPath(name), bytes);
            TUpdateFile& file = update.Files.emplace_back();
            file.Target = name;
            file.Size = bytes.size();
            file.Sha256 = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
        }
        return update;
    }

    // Sets `permissions`, and returns the permissions that the file then has. A system may not support all
    // of `permissions`.
    static QFile::Permissions PermissionsOnceSet(const QString& path, QFile::Permissions permissions)
    {
        EXPECT_TRUE(QFile::setPermissions(path, permissions));
        return QFile::permissions(path);
    }

    // Returns the content of the program folder, without the log and the record of the accepted version.
    TFolderContent Files() const
    {
        return FolderContent(FFolder.Path(), { "WUPDATE.LOG", "CorvadineUpdate.accepted" });
    }

    static TFolderContent Updated()
    {
        TFolderContent files = NewFiles;
        files.insert(OldFiles.begin(), OldFiles.end()); // does not overwrite the new files
        return files;
    }

    QString Program() const { return FFolder.PathOf("corvadine"); }
    std::string Log() const { return FileBytes(FFolder.Log().Path()).toStdString(); }

    // Runs `action` with an installer in a copy of this process. The copy ends before the first step for
    // which `isDeadly` returns true, as if the copy were killed. Returns whether `action` came to its end.
    template <typename TAction>
    bool Survives(const std::function<bool(const QString&)>& isDeadly, const TAction& action) const
    {
        return SurvivesInCopy([&] {
            TUpdateInstaller installer(FFolder);
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

    const TUpdateFolder FFolder { Path("program") };
    QFile::Permissions FPermissions; // the program's permissions that the system supports
};

TEST_F(UpdateInstallTest, ReplacesAllFilesAndLeavesNothingBehind)
{
    constexpr auto Data = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup;
    const TStagedUpdate update = Stage();
    const QString guide = FFolder.PathOf("docs/guide.txt"); // becomes executable
    QFile::setPermissions(guide, Data);
    QFile::setPermissions(
        FFolder.StagedPath("docs/guide.txt"), QFile::ReadOwner | QFile::ReadOther | QFile::ExeOwner);
    TUpdateInstaller(FFolder).Install(update, Program());
    EXPECT_EQ(Files(), Updated());
    EXPECT_EQ(QFile::permissions(Program()), FPermissions);
    PutFile(Path("probe"), {});
    EXPECT_EQ(QFile::permissions(guide),
        PermissionsOnceSet(Path("probe"), Data | QFile::ExeOwner | QFile::ExeGroup));
    EXPECT_EQ(FileBytes(FFolder.PathOf("CorvadineUpdate.accepted")), "1.1.0\n");
    EXPECT_THAT(Log(), Matches("([0-9]{2}/[0-9]{2}/[0-9]{4} [0-9]{2}:[0-9]{2} [^\n]+: [^\n]+\n){5}"));
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
        EXPECT_EQ(RecoverUpdate(FFolder), TRecovery::NotNeeded);
        FFolder.DropStaging(); // as the next check does
        EXPECT_EQ(Files(), newProgramRuns ? Updated() : OldFiles) << "after step " << step;
    }
    EXPECT_EQ(Files(), Updated());
}

TEST_F(UpdateInstallTest, StartCompletesOrUndoesWhatWasCutOff)
{
    if (!IsPosix())
        GTEST_SKIP();
    const QString guide = FFolder.PathOf("docs/guide.txt");
    const auto cutOffBefore = [&](const QString& deadly, const QByteArray& laterGuide = {}) {
        const TStagedUpdate update = Stage();
        Survives([&](const QString& step) { return step == deadly; },
            [&](TUpdateInstaller& installer) { installer.Install(update, Program()); });
        if (!laterGuide.isEmpty())
            PutFile(guide, laterGuide);
        return RecoverUpdate(FFolder);
    };
    EXPECT_EQ(cutOffBefore("write the journal"), TRecovery::NotNeeded);
    EXPECT_EQ(cutOffBefore("move in corvadine"), TRecovery::Undone);
    EXPECT_EQ(cutOffBefore("settle the update"), TRecovery::Completed);
    EXPECT_EQ(cutOffBefore("remove the journal", "my guide"), TRecovery::Completed);
    EXPECT_EQ(FileBytes(guide), "my guide");
    EXPECT_EQ(FileBytes(FFolder.PathOf("CorvadineUpdate.accepted")), "1.1.0\n");
    EXPECT_THAT(Log(), HasSubstr("completed it"));

    Stage();
    PutFile(FFolder.PathOf("CorvadineUpdate.old/journal"), "{");
    EXPECT_THAT(ErrorOf([&] { RecoverUpdate(FFolder); }), HasSubstr("install Corvadine anew"));
    EXPECT_EQ(RecoverUpdate(FFolder), TRecovery::NotNeeded) << "not at every start";
    EXPECT_EQ(FileBytes(FFolder.PathOf("CorvadineUpdate.damaged/journal")), "{");
    EXPECT_THAT(Log(), HasSubstr("failed. "));
}

TEST_F(UpdateInstallTest, OtherProcessesStayOutWhileTheHelperTakesOver)
{
    Stage();
    const QString lockFile = FFolder.PathOf("CorvadineUpdate.lock");
    PutFile(lockFile, {}); // left by a killed process or by another computer
    EXPECT_EQ(RecoverUpdate(FFolder), TRecovery::NotNeeded);
    FFolder.MarkHandedOver();
    EXPECT_THAT(ErrorOf([&] { FFolder.Lock(); }), HasSubstr("CorvadineUpdate.lock"));
    EXPECT_EQ(RecoverUpdate(FFolder), TRecovery::BeingInstalled) << "about to be";
    SetFileTime(FFolder.Staging() + "/handed-over", QDateTime::currentDateTime().addSecs(-90));
    {
        const TUpdateLock helper = FFolder.AwaitLock(1ms);
        EXPECT_EQ(RecoverUpdate(FFolder), TRecovery::BeingInstalled);
    }
    EXPECT_EQ(RecoverUpdate(FFolder), TRecovery::NotNeeded) << "the helper is gone for good";
    EXPECT_FALSE(QFile::exists(lockFile));
}

TEST_F(UpdateInstallTest, FailureAtAnyStepPutsAllBack)
{
    for (int failing = 0;; ++failing) {
        const TStagedUpdate update = Stage();
        // Windows refuses to replace or remove files that are marked read-only.
        PutFile(FFolder.StagedPath("left over"), {});
        for (const QString& readOnly : { FFolder.StagedPath("left over"), Program() })
            FPermissions = PermissionsOnceSet(readOnly, QFile::ReadOwner | QFile::ExeOwner);
        TUpdateInstaller installer(FFolder);
        installer.BeforeStep = [isFailing = Number(failing)](const QString& step) {
            if (isFailing(step))
                throw TError(TErrorKind::Io, "the disk is on fire");
        };
        try {
            installer.Install(update, Program());
            break; // the update is settled, and Install() no longer fails if a later step fails
        } catch (const TError& error) {
            EXPECT_EQ(error.Text(), "the disk is on fire");
        }
        EXPECT_EQ(Files(), OldFiles) << "step " << failing;
        EXPECT_EQ(QFile::permissions(Program()), FPermissions) << "step " << failing;
    }
    EXPECT_EQ(RecoverUpdate(FFolder), TRecovery::Completed);
    EXPECT_EQ(Files(), Updated());
    EXPECT_EQ(QFile::permissions(Program()), FPermissions);
}

TEST_F(UpdateInstallTest, RefusesWhatIsNotAsItWasDownloaded)
{
    std::vector<std::pair<std::function<void(TStagedUpdate&)>, const char*>> cases {
        { [&](auto&) { PutFile(FFolder.StagedPath("docs/guide.txt"), "bad guide"); }, "guide" },
        { [&](auto&) { QFile::remove(FFolder.StagedPath("corvadine")); }, "corvadine" },
        { [](auto& update) { update.Files[0].Target = "Corvadine.db"; }, "Corvadine.db" },
        { [&](auto&) {
             QFile::remove(Program());
             PutFile(Program() + "/x/y", "a folder in the way");
         },
            "something else has its name" },
    };
    if (IsPosix())
        cases.emplace_back(
            [&](auto&) {
                QFile::rename(Program(), FFolder.PathOf("real"));
                QFile::link("real", Program());
            },
            "it is a link");
    for (const auto& [spoil, text] : cases) {
        TStagedUpdate update = Stage();
        spoil(update);
        TFolderContent files = Files();
        std::erase_if(files, [](const auto& file) { return file.first.startsWith("CorvadineUpdate."); });
        EXPECT_THAT(ErrorOf([&] { TUpdateInstaller(FFolder).Install(update, Program()); }), HasSubstr(text));
        EXPECT_EQ(Files(), files) << text;
    }
}

TEST_F(UpdateInstallTest, LogStaysSmallAndItsLinesHonest)
{
    QDir().mkpath(FFolder.Path());
    const TUpdateLog log = FFolder.Log();
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
    // On Windows the permission bits of the group and of others give no rights.
    EXPECT_TRUE(!IsPosix() || (QFile::permissions(folder).toInt() & 0x77) == 0);
    EXPECT_TRUE(MakePrivateFolder(folder)) << "another user may have prepared it";
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
