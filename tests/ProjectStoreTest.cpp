#include "store/ProjectStore.h"

#include "tests/Testing.h"
#include "tests/TestingSystem.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <thread>

using namespace Corvadine;
using namespace Corvadine::Testing;
using namespace std::chrono_literals;
using ::testing::EndsWith;

namespace {

// The table of older releases, which had no resampling filter yet.
const std::string OlderTable =
    "CREATE TABLE Projects (ID integer PRIMARY KEY,ProjectFile VARCHAR(256),IconImageName VARCHAR(256),"
    "SplashImageName VARCHAR(256),IncAndroid BOOLEAN,IncIPhone BOOLEAN,IncIPad BOOLEAN,IncWindows BOOLEAN,"
    "TwoxSize INTEGER,OutputFolder VARCHAR(256),PickColor INTEGER,PixelFormat INTEGER,Compression INTEGER";
const std::string Index = "CREATE UNIQUE INDEX index_ProjectFile ON Projects(ProjectFile)";
const std::string OlderDatabase = OlderTable + ");" + Index
    + ";INSERT INTO Projects (ProjectFile,IncIPad,PickColor) VALUES ('C:\\a.dproj',1,-1);"
      "INSERT INTO Projects (ProjectFile,Compression) VALUES ('C:\\ü 😀''s.dproj',9)";

class ProjectStoreTest : public TFolderTest {
protected:
    QString Database() const { return Path("Corvadine.db"); }
    // Opens the file as another program would.
    SQLite::Database Raw() const
    {
        return { Database().toStdString(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE };
    }
    std::string OpenError(const QString& path) const
    {
        return ErrorOf([&] { const TProjectStore store(path, 50ms); });
    }
};

} // namespace

TEST_F(ProjectStoreTest, CreatesExactlyTheAgreedSchema)
{
    PutFile(Database(), ""); // an empty file counts as missing
    const TProjectStore store(Database());
    auto raw = Raw();
    EXPECT_EQ(raw.execAndGet("SELECT group_concat(sql,'|') FROM sqlite_master").getString(),
        OlderTable + ",ResampleFilter INTEGER)|" + Index);
    EXPECT_EQ(raw.execAndGet("PRAGMA user_version").getInt(), 0);
    EXPECT_EQ(raw.execAndGet("PRAGMA journal_mode").getString(), "delete");
    EXPECT_EQ(QDir(Path(".")).entryList(QDir::Files), QStringList("Corvadine.db"));
}

TEST_F(ProjectStoreTest, UpgradesAnOlderDatabaseOnceAndReadsWhatItLacks)
{
    Raw().exec(OlderDatabase);
    auto projects = TProjectStore(Database()).ReadProjects();
    ASSERT_EQ(projects.size(), 2U);
    EXPECT_EQ(projects[0],
        (TProject {
            .ID = 1, .ProjectFile = "C:\\a.dproj", .IncIPad = true, .PickColor = -1, .ResampleFilter = 6 }));
    EXPECT_EQ(projects[1],
        (TProject { .ID = 2, .ProjectFile = "C:\\ü 😀's.dproj", .Compression = 9, .ResampleFilter = 6 }));

    Raw().exec("UPDATE Projects SET ResampleFilter=NULL WHERE ID=1; UPDATE Projects SET ResampleFilter=2 "
               "WHERE ID=2");
    projects = TProjectStore(Database()).ReadProjects();
    EXPECT_EQ(projects[0].ResampleFilter, std::nullopt);
    EXPECT_EQ(projects[1].ResampleFilter, 2);
}

TEST_F(ProjectStoreTest, FailingSchemaChangeLeavesNothingHalfDone)
{
    Raw().exec("CREATE TABLE index_ProjectFile (x)");
    EXPECT_THAT(OpenError(Database()), EndsWith(": there is already a table named index_ProjectFile"));
    EXPECT_FALSE(Raw().tableExists("Projects"));

    Raw().exec("DROP TABLE index_ProjectFile;" + OlderDatabase
        + ";CREATE TRIGGER t BEFORE UPDATE ON Projects BEGIN SELECT RAISE(ABORT,'no'); END");
    EXPECT_THAT(OpenError(Database()), EndsWith(": no"));
    Raw().exec("DROP TRIGGER t");
    EXPECT_EQ(TProjectStore(Database()).ReadProjects().front().ResampleFilter, 6);
}

TEST_F(ProjectStoreTest, RefusesWhatItCannotUseAndSaysWhy)
{
    ASSERT_TRUE(QDir(Path(".")).mkdir("folder"));
    Raw().exec(OlderDatabase);
    QByteArray damaged = FileBytes(Database());
    damaged.replace(4096, 4096, QByteArray(4096, '\x5a')); // the page with the rows
    PutFile(Path("damaged"), damaged);
    Raw().exec("PRAGMA user_version=1");

    const std::pair<QString, std::string> cases[] = {
        { Path("no/x.db"), "its folder does not exist" },
        { Path("folder"), "it is a folder" },
        { Path("damaged"), "database disk image is malformed" },
        { Database(), "it belongs to a newer release of Corvadine (its schema is version 1)" },
    };
    for (const auto& [path, reason] : cases)
        EXPECT_EQ(OpenError(path), "Cannot open the project database " + path.toStdString() + ": " + reason);
}

TEST_F(ProjectStoreTest, ReadsButDoesNotWriteAFileMarkedReadOnly)
{
    Raw().exec(OlderDatabase);
    QFile::setPermissions(Database(), QFile::ReadOwner);
    EXPECT_THAT(OpenError(Database()), EndsWith(": attempt to write a readonly database"))
        << "needs an upgrade";

    QFile::setPermissions(Database(), QFile::ReadOwner | QFile::WriteOwner);
    EXPECT_FALSE(TProjectStore(Database()).IsReadOnly());
    QFile::setPermissions(Database(), QFile::ReadOwner);
    TProjectStore store(Database());
    EXPECT_TRUE(store.IsReadOnly());
    EXPECT_EQ(store.ReadProjects().size(), 2U);
    EXPECT_EQ(ErrorOf([&] { store.Insert({ .ProjectFile = "b" }, { TField::ProjectFile }); }),
        "Cannot add the project b to " + Database().toStdString() + ": attempt to write a readonly database");
}

TEST_F(ProjectStoreTest, WaitsForAnotherProgramAndThenSaysTheDatabaseIsLocked)
{
    TProjectStore store(Database(), 50ms);
    auto other = Raw();
    other.exec("BEGIN EXCLUSIVE");
    EXPECT_THAT(OpenError(Database()), EndsWith(": database is locked"));
    EXPECT_THAT(ErrorOf([&] { store.Insert({}, {}); }), EndsWith(": database is locked"));
    other.exec("ROLLBACK");
    EXPECT_EQ(store.Insert({}, {}).ID, 1);

    TProjectStore patient(Database());
    other.exec("BEGIN EXCLUSIVE");
    std::thread release([&] {
        std::this_thread::sleep_for(20ms);
        other.exec("COMMIT");
    });
    EXPECT_EQ(patient.Insert({}, {}).ID, 2);
    release.join();
}

TEST_F(ProjectStoreTest, TwoProgramsDoNotUndoEachOther)
{
    TProjectStore ours(Database());
    TProjectStore theirs(Database());
    TProject project =
        ours.Insert({ .ProjectFile = "a", .TwoxSize = 1 }, { TField::ProjectFile, TField::TwoxSize });
    TProject sameRow = theirs.ReadProjects().front();
    sameRow.TwoxSize = 7;
    sameRow.Compression = 0; // set only in memory
    theirs.Update(sameRow, { TField::TwoxSize });

    project.PickColor = std::nullopt;
    project.IncIPad = true;
    const TProject merged = ours.Update(project, { TField::PickColor, TField::IncIPad });
    EXPECT_EQ(merged, (TProject { .ID = 1, .ProjectFile = "a", .IncIPad = true, .TwoxSize = 7 }));
    EXPECT_EQ(Raw().execAndGet("SELECT IncIPad || typeof(PickColor) FROM Projects").getString(), "1null");

    theirs.Delete(merged);
    EXPECT_EQ(ErrorOf([&] { ours.Update(merged, { TField::IncIPad }); }),
        "Cannot save the project a in " + Database().toStdString()
            + ": another program has deleted it meanwhile");
    const TProject successor = theirs.Insert({ .ProjectFile = "b" }, { TField::ProjectFile });
    EXPECT_THAT(
        ErrorOf([&] { ours.Update(merged, { TField::IncIPad }); }), EndsWith("has put b in its place"));
    ours.Delete(merged);
    EXPECT_EQ(ours.ReadProjects(), std::vector { successor });
}

TEST_F(ProjectStoreTest, FollowsAFileThatReplacesItsOwn)
{
    if (!IsPosix())
        GTEST_SKIP() << "Windows lets nothing replace an open database";
    TProjectStore store(Database(), 50ms);
    const TProject project = store.Insert({ .ProjectFile = "a" }, { TField::ProjectFile });
    const auto version = store.DataVersion();
    const auto expectRefused = [&](const char* reason) {
        EXPECT_THAT(ErrorOf([&] { store.DataVersion(); }), EndsWith(reason));
        EXPECT_THAT(ErrorOf([&] { store.Update(project, { TField::IncIPad }); }), EndsWith(reason));
        EXPECT_EQ(store.ReadProjects(), std::vector { project }) << "as it was";
    };
    QFile::remove(Database());
    expectRefused("another program has removed it");
    EXPECT_FALSE(QFile::exists(Database()));
    PutFile(Database(), "");
    expectRefused("another program has removed it");
    PutFile(Database(), QByteArray(512, 'x'));
    expectRefused("file is not a database");

    QFile::remove(Database());
    Raw().exec(OlderDatabase);
    EXPECT_NE(store.DataVersion(), version);
    EXPECT_EQ(store.Insert({ .ProjectFile = "b" }, { TField::ProjectFile }).ID, 3);
    EXPECT_EQ(store.ReadProjects().front().ResampleFilter, 6) << "upgraded like any other";
}
