#include "store/ProjectsTable.h"

#include "store/ProjectStore.h"
#include "tests/Testing.h"

#include <SQLiteCpp/Database.h>

#include <optional>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::EndsWith;
using TState = TProjectsTable::TState;

namespace {

// A table with the projects "a", "b" and "c" whose announcements are recorded in FLog.
class ProjectsTableTest : public TFolderTest {
protected:
    ProjectsTableTest()
    {
        for (const char* name : { "a", "b", "c" })
            FStore.Insert({ .ProjectFile = name }, { TField::ProjectFile });
        QObject::connect(&FTable, &TProjectsTable::CurrentChanged, [this] { Note("row " + Name()); });
        QObject::connect(&FTable, &TProjectsTable::RowsChanged,
            [this] { Note("rows " + QString::number(FTable.Rows().size())); });
        QObject::connect(
            &FTable, &TProjectsTable::FieldChanged, [this](TField field) { Note(FieldName(field)); });
        QObject::connect(&FTable, &TProjectsTable::StateChanged, [this](TState state) {
            EXPECT_EQ(state, FTable.State());
            static const char* const Names[] { "closed", "browse", "edit", "insert" };
            Note(Names[static_cast<int>(state)]);
        });
    }

    QString Name() const { return FTable.IsEmpty() ? "none" : FTable.Current().ProjectFile; }
    void Note(const QString& what) { FLog += (FLog.isEmpty() ? "" : ", ") + what; }
    // What has been announced since the last call.
    std::string Announced() { return std::exchange(FLog, QString()).toStdString(); }

    TProjectStore FStore { Path("Corvadine.db") };
    TProjectsTable FTable;

private:
    QString FLog;
};

} // namespace

TEST_F(ProjectsTableTest, AnnouncesEveryChangeOnceInOrder)
{
    struct TStep {
        const char* Name;
        std::function<void()> Act;
        const char* Expected;
    };
    const TStep steps[] {
        { "open", [&] { FTable.Open(FStore); }, "browse, rows 3, row a" },
        { "move", [&] { FTable.LocateByID(2); }, "row b" },
        { "set", [&] { FTable.SetField(TField::TwoxSize, 300); }, "edit, TwoxSize" },
        { "set to the same", [&] { FTable.SetField(TField::TwoxSize, 300); }, "" },
        { "locate the row itself", [&] { FTable.LocateByID(2); }, "" },
        { "cancel", [&] { FTable.Cancel(); }, "browse, TwoxSize" },
        { "set again", [&] { FTable.SetField(TField::IncIPad, true); }, "edit, IncIPad" },
        { "post", [&] { FTable.Post(); }, "browse, rows 3" },
        { "edit", [&] { FTable.Edit(); }, "edit" },
        { "leave", [&] { FTable.LocateByID(3); }, "browse, row c" },
        { "append", [&] { FTable.Append(); }, "insert, row " },
        { "cancel append", [&] { FTable.Cancel(); }, "browse, row c" },
        { "append again", [&] { FTable.Append(); }, "insert, row " },
        { "name", [&] { FTable.SetField(TField::ProjectFile, "d"); }, "ProjectFile" },
        { "post new", [&] { FTable.Post(); }, "browse, rows 4, ID" },
        { "delete last", [&] { FTable.Delete(); }, "rows 3, row c" },
        { "append, move", [&] { FTable.Append(), FTable.LocateByID(1); }, "insert, row , browse, row a" },
        { "delete first", [&] { FTable.Delete(); }, "rows 2, row b" },
        { "delete while editing", [&] { FTable.Edit(), FTable.Delete(); }, "edit, browse, rows 1, row c" },
        { "delete the only one", [&] { FTable.Delete(); }, "rows 0, row none" },
        { "delete nothing", [&] { EXPECT_FALSE(FTable.Delete()); }, "" },
        { "edit nothing", [&] { FTable.SetField(TField::ProjectFile, "e"); }, "insert, row , ProjectFile" },
        { "delete the unsaved", [&] { FTable.Delete(); }, "browse, row none" },
        { "close", [&] { FTable.Close(); }, "closed" },
        { "open empty", [&] { FTable.Open(FStore); }, "browse" },
    };
    for (const auto& step : steps) {
        step.Act();
        EXPECT_EQ(Announced(), step.Expected) << step.Name;
    }
}

TEST_F(ProjectsTableTest, NewRowStartsFromTheDefaultsAndIsSavedAtTheEnd)
{
    FTable.Open(FStore);
    FTable.Append();
    TProject expected { .IncAndroid = true,
        .IncIPhone = true,
        .IncIPad = true,
        .IncWindows = true,
        .TwoxSize = 400,
        .PickColor = 0xFFFFFF,
        .PixelFormat = 1,
        .Compression = 6,
        .ResampleFilter = 6 };
    EXPECT_EQ(FTable.Current(), expected);
    FTable.SetField(TField::ProjectFile, "d");
    FTable.SetField(TField::PickColor, QVariant());
    EXPECT_EQ(FTable.LookupByProjectFile("d"), std::nullopt) << "not saved yet";
    FTable.Post();

    expected.ID = 4;
    expected.ProjectFile = "d";
    expected.PickColor = std::nullopt;
    EXPECT_EQ(FTable.Current(), expected);
    EXPECT_EQ(FStore.ReadProjects().back(), expected);
    EXPECT_EQ(FTable.LookupByProjectFile("d"), 4);
    EXPECT_EQ(FTable.LookupByProjectFile("D"), std::nullopt);
}

TEST_F(ProjectsTableTest, FailedPostKeepsTheRowInEditingWithItsValues)
{
    FTable.Open(FStore);
    for (const auto state : { TState::Insert, TState::Edit }) {
        state == TState::Insert ? FTable.Append() : FTable.Edit();
        FTable.SetField(TField::ProjectFile, "b");
        Announced();
        EXPECT_THAT(
            ErrorOf([&] { FTable.Post(); }), EndsWith(": UNIQUE constraint failed: Projects.ProjectFile"));
        EXPECT_EQ(FTable.State(), state);
        EXPECT_EQ(FTable.Current().ProjectFile, "b");
        EXPECT_EQ(Announced(), "");
        FTable.Cancel();
        EXPECT_EQ(Name(), "a");
    }
    EXPECT_EQ(FStore.ReadProjects().size(), 3U);

    FTable.SetField(TField::TwoxSize, 5);
    EXPECT_EQ(ErrorOf([&] { FTable.SetField(TField::TwoxSize, "wide"); }),
        "Cannot set TwoxSize to \"wide\": it takes an integer");
    EXPECT_EQ(FTable.Current().TwoxSize, 5);
    FTable.Close();
    EXPECT_EQ(ErrorOf([&] { FTable.Edit(); }), "The project database is not open");
}

TEST_F(ProjectsTableTest, OnlyPostWrites)
{
    FTable.Open(FStore);
    const auto before = FStore.ReadProjects();
    FTable.SetField(TField::Compression, 9);
    EXPECT_TRUE(FTable.LocateByID(3));
    EXPECT_FALSE(FTable.LocateByID(99));
    EXPECT_EQ(Name(), "c");
    FTable.SetField(TField::Compression, 9);
    FTable.SetDeleteConfirmation([] { return false; });
    EXPECT_FALSE(FTable.Delete());
    EXPECT_EQ(FTable.State(), TState::Edit);
    FTable.Close();
    EXPECT_EQ(FStore.ReadProjects(), before);
}

TEST_F(ProjectsTableTest, FollowsWhatAnotherProgramWrote)
{
    FTable.Open(FStore);
    FTable.LocateByID(2);
    TProjectStore other(Path("Corvadine.db"));
    other.Update({ .ID = 2, .ProjectFile = "b", .TwoxSize = 7 }, { TField::TwoxSize });
    FTable.SetField(TField::Compression, 9);
    Announced();
    FTable.Refresh();
    EXPECT_EQ(Announced(), "") << "would lose the edit";
    FTable.Post();
    EXPECT_EQ(Announced(), "browse, rows 3, TwoxSize");
    EXPECT_EQ(FTable.Current().TwoxSize, 7);

    other.Update({ .ID = 2, .ProjectFile = "b", .TwoxSize = 8 }, { TField::TwoxSize });
    FTable.Refresh();
    EXPECT_EQ(Announced(), "rows 3, TwoxSize");
    other.Delete(FTable.Current());
    FTable.SetField(TField::Compression, 3);
    EXPECT_THAT(ErrorOf([&] { FTable.Post(); }), EndsWith("another program has deleted it meanwhile"));
    EXPECT_EQ(FTable.Current().Compression, 3);
    FTable.Cancel();
    Announced();
    SQLite::Database lock(Path("Corvadine.db").toStdString(), SQLite::OPEN_READWRITE);
    lock.exec("BEGIN EXCLUSIVE");
    EXPECT_THAT(ErrorOf([&] { FTable.Refresh(); }), EndsWith("database is locked"));
    lock.exec("ROLLBACK");
    FTable.Refresh();
    EXPECT_EQ(Announced(), "rows 2, row c");
}
