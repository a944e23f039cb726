#include "project/Backups.h"

#include "project/ProjectUpdater.h"
#include "store/ProjectStore.h"
#include "tests/Testing.h"

#include <QDir>
#include <QFile>

#include <thread>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

const QDateTime Noon { QDate(2024, 3, 5), QTime(12, 0, 0) };

QByteArray ProjectWith(const QByteArray& guid, const QByteArray& rest = {})
{
    return "<Project><PropertyGroup><ProjectGuid>{" + guid + "}</ProjectGuid></PropertyGroup>" + rest
        + "</Project>";
}

} // namespace

class BackupsTest : public TFolderTest {
protected:
    BackupsTest()
    {
        const TProjectStore made(FDatabase);
        PutFile(FFile, ProjectWith("A", "<Now/>"));
        QFile::setPermissions(FFile, QFile::ReadOwner | QFile::WriteOwner);
    }

    QString Copy(const QString& name) const { return FFolder + QDir::separator() + name; }

    QString Keep(const QByteArray& bytes, const QDateTime& time, TKeep keep = TKeep::Once)
    {
        return FBackups.Keep(FFile, bytes, time, TBackupReason::Update, keep);
    }

    std::string RestoreError(const TRestoreOrder& order)
    {
        return ErrorOf([&] { FBackups.Restore(FFile, order); });
    }

    const QString FFile = Path("Demo.dproj");
    const QString FDatabase = Path("Corvadine.db");
    const QString FFolder = Path("Project Backups");
    TBackups FBackups { FFolder, FDatabase };
};

TEST_F(BackupsTest, NameKeepsTheFullStopBeforeTheTime)
{
    const QDateTime time(QDate(2024, 3, 5), QTime(14, 7, 9));
    const auto nameOf = [&](const char* file) {
        return QFileInfo(FBackups.Keep(file, file, time, TBackupReason::Update)).fileName();
    };
    EXPECT_EQ(nameOf(R"(C:\Dev\Demo.dproj)"), "Demo.20240305140709.dproj");
    EXPECT_EQ(nameOf("/x.y/Demo.xml"), "Dem20240305140709.xml");
    EXPECT_EQ(nameOf("/x.y/abc"), "20240305140709");
    EXPECT_EQ(ErrorOf([&] { TBackups({}, FDatabase).Keep(FFile, {}, time, TBackupReason::Update); }),
        "No folder for backups was given")
        << "the current folder is none";
    EXPECT_EQ(ErrorOf([&] { TBackups({}, FDatabase).KeepUnrecorded(FFile, {}, time); }),
        "No folder for backups was given");
}

TEST_F(BackupsTest, ProgramsThatKeepFilesOfOneNameAtOnceLoseNone)
{
    constexpr int Programs = 8;
    std::vector<std::thread> programs;
    programs.reserve(Programs);
    std::array<QString, Programs> paths;
    for (int i = 0; i < Programs; ++i)
        programs.emplace_back([this, i, &paths] {
            const QString project = Path("%1/Demo.dproj").arg(i);
            paths[static_cast<std::size_t>(i)] =
                TBackups(FFolder, FDatabase)
                    .Keep(project, ProjectWith(QByteArray::number(i)), Noon, TBackupReason::Update);
        });
    for (std::thread& program : programs)
        program.join();
    for (int i = 0; i < Programs; ++i)
        EXPECT_EQ(FileBytes(paths[static_cast<std::size_t>(i)]), ProjectWith(QByteArray::number(i)));
    EXPECT_EQ(QDir(FFolder).entryList(QDir::Files).size(), Programs);
}

TEST_F(BackupsTest, ReplacesOnlyACopyOfTheSameProjectAndSecondAndOnlyWhenAsked)
{
    const QString other = FBackups.Keep(Path("b/Demo.dproj"), ProjectWith("A"), Noon, TBackupReason::Update);
    PutFile(Copy("Demo.20240305120001.dproj"), "without a record");
    const QString first = Keep("first", Noon);
    EXPECT_EQ(first, Copy("Demo.20240305120002.dproj"));
    EXPECT_EQ(Keep("second", Noon), Copy("Demo.20240305120003.dproj"));
    EXPECT_EQ(Keep("first", Noon.addSecs(3600)), first) << "equal content is kept once";
    PutFile(first, "damaged meanwhile");
    EXPECT_EQ(Keep("first", Noon.addSecs(9)), Copy("Demo.20240305120009.dproj")) << "and one that is whole";

    const QString third = Keep("third", Noon.addDays(1), TKeep::Always);
    EXPECT_EQ(Keep("fourth", Noon.addDays(1), TKeep::Always), third);
    EXPECT_EQ(FileBytes(third), "fourth");
    QDateTime repeated = Noon.addDays(1).toOffsetFromUtc(Noon.offsetFromUtc());
    repeated.setOffsetFromUtc(Noon.offsetFromUtc() - 3600); // the same local time, as in autumn
    EXPECT_EQ(Keep("fifth", repeated, TKeep::Always), Copy("Demo.20240306120001.dproj"));
    EXPECT_EQ(FileBytes(third), "fourth");
    EXPECT_EQ(FileBytes(other), ProjectWith("A"));
    EXPECT_EQ(FileBytes(Copy("Demo.20240305120001.dproj")), "without a record");
    EXPECT_EQ(FileBytes(FBackups.KeepUnrecorded(FFile, "sixth", Noon)), "sixth");
}

TEST_F(BackupsTest, AReplacementThatWasKilledLeavesTheWholeOldCopy)
{
    const QString copy = Keep(ProjectWith("A", "<Old/>"), Noon);
    TBackupIndex index(FDatabase);
    TBackupRecord next = index.Records().at(0); // a process was killed after writing this record
    next.Sha256 = QByteArray(32, 'x');
    ASSERT_TRUE(index.Add(next));
    EXPECT_EQ(FBackups.List(FFile).at(0).Fault, "");
    EXPECT_EQ(Keep(ProjectWith("A", "<Old/>"), Noon.addSecs(9)), copy) << "equal content is kept once";
    FBackups.Restore(FFile, { .Name = QFileInfo(copy).fileName(), .Now = Noon.addSecs(60) });
    EXPECT_EQ(FileBytes(FFile), ProjectWith("A", "<Old/>"));
}

TEST_F(BackupsTest, PruningNeverCountsOrTakesWhatIsNeeded)
{
    const QString good = Keep("good", Noon);
    const QString older = Keep("older", Noon.addSecs(-60));
    PutFile(Keep("cut", Noon.addSecs(60)), "cu");
    QFile::remove(Keep("gone", Noon.addSecs(120)));
    EXPECT_EQ(FBackups.Prune(FFile, 1), QStringList(QFileInfo(older).fileName()));
    EXPECT_EQ(FileBytes(good), "good") << "damaged and missing copies do not count";

    TBackupIndex index(FDatabase);
    const TBackupRecord seen = index.Records().at(0);
    const auto remove = [&] { QFile::remove(good); };
    Keep("good", Noon.addSecs(180)); // another program uses the copy again
    EXPECT_FALSE(index.Remove(seen, remove));
    EXPECT_EQ(FileBytes(good), "good");
    EXPECT_TRUE(index.Remove(index.Records().back(), remove));
    EXPECT_FALSE(index.Add(seen)) << "the copy is gone";
}

TEST_F(BackupsTest, WithdrawsOnlyItsOwnRecord)
{
    TBackupIndex index(FDatabase);
    const TBackupRecord record { "Demo.dproj", FFile, {}, QByteArray(32, 'x'), Noon };
    const auto number = index.Reserve(record);
    ASSERT_TRUE(number && index.Add(record));
    EXPECT_FALSE(index.Reserve(record));
    index.Withdraw(record, *number);
    EXPECT_EQ(index.Records().size(), 1U);
}

TEST_F(BackupsTest, ListsTheCopiesOfThisPathOldestFirst)
{
    Keep("new", Noon);
    Keep("old", Noon.addDays(-1));
    PutFile(Keep("cut", Noon.addSecs(60)), "cu");
    QFile::remove(Keep("gone", Noon.addSecs(120)));
    FBackups.Keep(Path("b/Demo.dproj"), ProjectWith("A"), Noon, TBackupReason::Update);
    PutFile(Copy("Demo.20230305110000.dproj"), ProjectWith("A"));
    for (const char* other : { "Demo.20240305990000.dproj", "Demo.20240305110000.bak",
             "Demo2.20240305110000.dproj", "Demo.20240305110000.20240305110000.dproj" })
        PutFile(Copy(other), ProjectWith("A"));

    std::vector<std::string> lines;
    for (const TBackup& backup : FBackups.List(FFile))
        lines.push_back((backup.Name + (backup.Reason ? "" : " unrecorded") + backup.Fault).toStdString());
    EXPECT_THAT(lines,
        ::testing::ElementsAre("Demo.20230305110000.dproj unrecorded", "Demo.20240304120000.dproj",
            "Demo.20240305120000.dproj", "Demo.20240305120100.dprojits content is not what was kept"));

    EXPECT_EQ(FBackups.Prune(FFile, 1), QStringList("Demo.20240304120000.dproj"));
    EXPECT_EQ(FBackups.List(FFile).size(), 3U) << "the one without a record stays";
    EXPECT_EQ(FBackups.List(Path("b/Demo.dproj")).size(), 2U);
}

TEST_F(BackupsTest, RestoresTheNewestOfAnUpdateAndCanUndoIt)
{
    const QByteArray now = FileBytes(FFile);
    const QByteArray old = "\xEF\xBB\xBF" + ProjectWith("A", "<Old/>\r\n");
    const QString kept = Keep(old, Noon);

    const auto restored = FBackups.Restore(FFile, { .Now = Noon.addSecs(60) });
    EXPECT_EQ(restored.BackupPath, kept);
    EXPECT_EQ(FileBytes(FFile), old);
    EXPECT_EQ(FileBytes(restored.SavedPath), now);
    const auto again = FBackups.Restore(FFile, { .Now = Noon.addSecs(120) });
    EXPECT_EQ(again.BackupPath, kept) << "not what the first restore kept, which is newer";
    EXPECT_FALSE(again.IsWritten);
    EXPECT_EQ(
        FBackups.Restore(FFile, { .IsUndo = true, .Now = Noon.addSecs(180) }).BackupPath, restored.SavedPath);
    EXPECT_EQ(FileBytes(FFile), now);
    EXPECT_EQ(FBackups.Restore(FFile, { .Now = Noon.addSecs(240) }).BackupPath, kept);
    EXPECT_EQ(QDir(FFolder).entryList(QDir::Files).size(), 2) << "equal content is kept once";

    const auto permissions = QFile::permissions(FFile);
    QFile::remove(FFile);
    EXPECT_EQ(FBackups.Restore(FFile, { .Now = Noon }).SavedPath, "");
    EXPECT_EQ(FileBytes(FFile), old);
    EXPECT_EQ(QFile::permissions(FFile), permissions) << "those of the copy";
}

TEST_F(BackupsTest, RestoresForeignCopiesOnlyByForce)
{
    const std::string cannot = "Cannot restore " + FFile.toStdString() + ": ";
    const std::string force = "; --force restores it all the same";
    const QString other = Path("b/Demo.dproj");
    const QString foreign =
        QFileInfo(FBackups.Keep(other, ProjectWith("A"), Noon, TBackupReason::Update)).fileName();
    PutFile(Copy("Demo.20240305110000.dproj"), ProjectWith("A"));
    const QString changed = QFileInfo(Keep(ProjectWith("A"), Noon)).fileName();
    PutFile(Copy(changed), ProjectWith("A", "<Changed/>"));
    const QString damaged = QFileInfo(Keep("<Project>", Noon)).fileName();

    EXPECT_THAT(RestoreError({}), ::testing::StartsWith(cannot + "there is no backup of it in "))
        << "an unknown, a changed and another path's copy";
    EXPECT_THAT(RestoreError({ .IsUndo = true }), ::testing::StartsWith(cannot + "no restore of it"));
    EXPECT_EQ(RestoreError({ foreign }),
        cannot + "the backup " + foreign.toStdString() + " was made of " + other.toStdString() + force);
    EXPECT_EQ(RestoreError({ "Demo.20240305110000.dproj" }),
        cannot + "nothing is recorded of the backup Demo.20240305110000.dproj" + force);
    EXPECT_EQ(RestoreError({ changed }),
        cannot + "the content of the backup " + changed.toStdString() + " is not what was kept" + force);
    EXPECT_THAT(RestoreError({ damaged }),
        ::testing::StartsWith(cannot + "the backup " + damaged.toStdString()
            + " is damaged: it is not well-formed XML, line 1"));
    for (const char* name : { "Demo.20250305110000.dproj", "..", "Corvadine.db" })
        EXPECT_EQ(RestoreError({ name }), cannot + "it has no backup " + name);
    for (const char* name : { "../Demo.dproj", R"(..\Demo.dproj)", "C:Demo.dproj" })
        EXPECT_EQ(RestoreError({ name }), cannot + name + " is a path, not the name of a backup");
    EXPECT_EQ(FileBytes(FFile), ProjectWith("A", "<Now/>"));
    EXPECT_EQ(QDir(FFolder).entryList(QDir::Files).size(), 4) << "a refusal makes no backup";

    FBackups.Restore(FFile, { .Name = foreign, .IsForced = true, .Now = Noon });
    EXPECT_EQ(FileBytes(FFile), ProjectWith("A"));
}
