#include "store/ProjectsTable.h"

#include "store/ProjectStore.h"
#include "tests/Testing.h"

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::EndsWith;
using TState = TProjectsTable::TState;

namespace {

// A table with the projects "a", "b" and "c". FLog records what the table announces.
class ProjectsTableTest : public TFolderTest {
protected:
    ProjectsTableTest()
    {
        for (const char* name : { "a", "b", "c" })
            FStore.Insert({ .ProjectFile = name }, { TField::ProjectFile });
        QObject::connect(&FTable, &TProjectsTable::CurrentChanged, [this] { FLog << "row " + Name(); });
        QObject::connect(&FTable, &TProjectsTable::RowsChanged,
            [this] { FLog << u"rows %1"_s.arg(FTable.Rows().size()); });
        QObject::connect(&FTable, &TProjectsTable::FoundChanged,
            [this](const TFieldSet& fields) { FLog << u"found %1"_s.arg(fields.size()); });
        QObject::connect(
            &FTable, &TProjectsTable::FieldChanged, [this](TField field) { FLog << ColumnOf(field).Name; });
        QObject::connect(&FTable, &TProjectsTable::StateChanged, [this](TState state) {
            EXPECT_EQ(state, FTable.State());
            static const char* const Names[] { "closed", "browse", "edit", "insert" };
            FLog << Names[static_cast<int>(state)];
        });
    }

    QString Name() const { return FTable.IsEmpty() ? "none" : FTable.Current().ProjectFile; }
    // Returns what was announced since the last call.
    std::string Announced() { return std::exchange(FLog, {}).join(", ").toStdString(); }

    TProjectStore FStore { Path("Corvadine.db") };
    TProjectsTable FTable;

private:
    QStringList FLog;
};

} // namespace

TEST_F(ProjectsTableTest, AnnouncesEveryChangeOnceInOrder)
{
    const std::tuple<const char*, std::function<void()>, const char*> steps[] {
        { "open", [&] { FTable.Open(FStore); }, "browse, rows 3, row a" },
        { "move", [&] { FTable.LocateByID(2); }, "row b" },
        { "set", [&] { FTable.SetField(TField::TwoxSize, 300); }, "edit, TwoxSize" },
        { "set to the same", [&] { FTable.SetField(TField::TwoxSize, 300), FTable.LocateByID(2); }, "" },
        { "cancel", [&] { FTable.Cancel(); }, "browse, TwoxSize" },
        { "post", [&] { FTable.SetField(TField::IncIPad, true), FTable.Post(); },
            "edit, IncIPad, browse, rows 3" },
        { "edit and leave", [&] { FTable.Edit(), FTable.LocateByID(3); }, "edit, browse, row c" },
        { "append and cancel", [&] { FTable.Append(), FTable.Cancel(); }, "insert, row , browse, row c" },
        { "append", [&] { FTable.Append(); }, "insert, row " },
        { "name and post", [&] { FTable.SetField(TField::ProjectFile, "d"), FTable.Post(); },
            "ProjectFile, browse, rows 4, ID" },
        { "delete last", [&] { FTable.Delete(); }, "rows 3, row c" },
        { "append, move back", [&] { FTable.Append(), FTable.LocateByID(3); },
            "insert, row , browse, row c" },
        { "delete first", [&] { FTable.LocateByID(1), FTable.Delete(); }, "row a, rows 2, row b" },
        { "delete while editing", [&] { FTable.Edit(), FTable.Delete(); }, "edit, browse, rows 1, row c" },
        { "delete the only one", [&] { FTable.Delete(); }, "rows 0, row none" },
        { "delete nothing", [&] { EXPECT_FALSE(FTable.Delete()); }, "" },
        { "edit nothing", [&] { FTable.SetField(TField::ProjectFile, "e"); }, "insert, row , ProjectFile" },
        { "delete the unsaved", [&] { FTable.Delete(); }, "browse, row none" },
        { "open without rows", [&] { FTable.Close(), FTable.Open(FStore); }, "closed, browse" },
    };
    for (const auto& [name, act, expected] : steps) {
        act();
        EXPECT_EQ(Announced(), expected) << name;
    }
}

TEST_F(ProjectsTableTest, NewRowStartsFromTheDefaultsAndIsSavedAtTheEnd)
{
    FTable.Open(FStore);
    FTable.Append();
    TProject expected { .IncAndroid = true, .IncIPhone = true, .IncIPad = true, .IncWindows = true };
    expected.TwoxSize = 400;
    expected.PickColor = 0xFFFFFF;
    expected.PixelFormat = 1;
    expected.Compression = expected.ResampleFilter = 6;
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

    FTable.SetField(TField::TwoxSize, 5);
    EXPECT_EQ(ErrorOf([&] { FTable.SetField(TField::TwoxSize, "wide"); }),
        "Cannot set TwoxSize to \"wide\": it takes an integer");
    EXPECT_EQ(FTable.Current().TwoxSize, 5);
}

TEST_F(ProjectsTableTest, ClosingDropsEditsAndAllRows)
{
    FTable.Open(FStore);
    EXPECT_TRUE(FTable.CanModify());
    const auto before = FStore.ReadProjects();
    FTable.SetField(TField::Compression, 9);
    EXPECT_TRUE(FTable.LocateByID(3) && !FTable.LocateByID(99));
    EXPECT_EQ(Name(), "c");
    FTable.SetField(TField::Compression, 9);
    FTable.SetDeleteConfirmation([] { return false; });
    EXPECT_FALSE(FTable.Delete());
    EXPECT_EQ(FTable.State(), TState::Edit);
    FTable.Close();
    EXPECT_EQ(FStore.ReadProjects(), before);
    FTable.SetDeleteConfirmation({});
    Announced();

    EXPECT_TRUE(FTable.IsEmpty() && FTable.Rows().empty());
    EXPECT_FALSE(FTable.IsOpen() || FTable.IsEditing() || FTable.CanModify());
    EXPECT_EQ(FTable.Current(), TProject {});
    EXPECT_FALSE(FTable.LocateByID(1) || FTable.LookupByProjectFile("a") || FTable.Delete());
    EXPECT_EQ(ErrorOf([&] { FTable.Append(); }), "The project database is not open");
    EXPECT_EQ(ErrorOf([&] { FTable.SetField(TField::TwoxSize, 5); }), "The project database is not open");
    FTable.Post(), FTable.Cancel(), FTable.Refresh(), FTable.Close();
    EXPECT_EQ(Announced(), "");
}

TEST_F(ProjectsTableTest, FollowsWhatAnotherProgramWrote)
{
    FTable.Open(FStore);
    FTable.LocateByID(2);
    FTable.SetField(TField::TwoxSize, 5), FTable.Cancel(); // must not be written later
    TProjectStore other(Path("Corvadine.db"));
    other.Update({ .ID = 2, .ProjectFile = "b", .TwoxSize = 7 }, { TField::TwoxSize });
    FTable.SetField(TField::Compression, 9);
    Announced();
    FTable.Refresh();
    EXPECT_EQ(Announced(), "") << "would lose the edit";
    FTable.Post();
    EXPECT_EQ(Announced(), "browse, rows 3, TwoxSize, found 1");

    other.Update({ .ID = 2, .ProjectFile = "b", .TwoxSize = 8 }, { TField::TwoxSize });
    FTable.Refresh();
    EXPECT_EQ(Announced(), "rows 3, TwoxSize, found 1");
    other.Delete(FTable.Current());
    FTable.SetField(TField::Compression, 3);
    EXPECT_THAT(ErrorOf([&] { FTable.Post(); }), EndsWith("another program has deleted it meanwhile"));
    EXPECT_EQ(FTable.Current().Compression, 3);
    FTable.Cancel();
    Announced();
    FTable.Refresh();
    EXPECT_EQ(Announced(), "rows 2, row c");
}

TEST_F(ProjectsTableTest, IsNotMistakenAboutAnIDThatPassedToAnotherProject)
{
    FTable.Open(FStore);
    FTable.LocateByID(3);
    TProjectStore other(Path("Corvadine.db"));
    const auto replace = [&](const char* name) {
        other.Delete(FTable.Current());
        other.Insert({ .ProjectFile = name }, { TField::ProjectFile });
    };
    replace("d");
    Announced();
    FTable.Refresh();
    EXPECT_EQ(Announced(), "rows 3, row d") << "no change of fields, but another row";

    other.Delete(FTable.Current());
    other.Delete(FTable.Rows()[1]);
    FTable.SetField(TField::TwoxSize, 5);
    FTable.Append(), FTable.SetField(TField::ProjectFile, "e"), FTable.Post();
    EXPECT_EQ(FTable.Current().ID, 2);
    EXPECT_EQ(FTable.Rows(), FStore.ReadProjects());
    EXPECT_TRUE(FTable.LocateByID(2));
    EXPECT_EQ(Name(), "e");
}

TEST_F(ProjectsTableTest, TakesAFieldBackWithoutWritingIt)
{
    FTable.Open(FStore);
    TProjectStore(Path("Corvadine.db"))
        .Update({ .ID = 1, .ProjectFile = "a", .TwoxSize = 7, .Compression = 1 },
            { TField::TwoxSize, TField::Compression });
    FTable.TakeBack(TField::TwoxSize);
    EXPECT_FALSE(FTable.IsEditing());
    FTable.SetField(TField::TwoxSize, 5), FTable.SetField(TField::Compression, 9);
    FTable.TakeBack(TField::TwoxSize);
    EXPECT_EQ(FTable.Current().TwoxSize, std::nullopt);
    FTable.Post();
    EXPECT_EQ(FTable.Current().TwoxSize, 7);
    EXPECT_EQ(FTable.Current().Compression, 9);
    FTable.Append(), FTable.SetField(TField::TwoxSize, 5), FTable.TakeBack(TField::TwoxSize);
    EXPECT_EQ(FTable.Current().TwoxSize, 400);
}
