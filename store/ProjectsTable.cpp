#include "store/ProjectsTable.h"

#include "base/Error.h"
#include "store/ProjectStore.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace Corvadine {

namespace {

constexpr int White = 0xFFFFFF;

// The defaults of a new project: 256 colors on white for all platforms, filtered with Mitchell. The caller
// fills in the texts.
TProject NewProject()
{
    return { .IncAndroid = true,
        .IncIPhone = true,
        .IncIPad = true,
        .IncWindows = true,
        .TwoxSize = 400,
        .PickColor = White,
        .PixelFormat = 1, // 256 colors
        .Compression = 6,
        .ResampleFilter = 6 };
}

} // namespace

TProjectsTable::TProjectsTable(QObject* parent) : QObject(parent) { }

void TProjectsTable::Open(TProjectStore& store)
{
    assert(!IsOpen());
    FRows = store.ReadProjects();
    FStore = &store;
    if (!FRows.empty())
        FPosition = 0;
    SetState(TState::Browse);
    if (IsEmpty())
        return;
    emit RowsChanged();
    emit CurrentChanged();
}

void TProjectsTable::Close()
{
    FStore = nullptr;
    FDataVersion.reset();
    FRows.clear();
    FPosition.reset();
    EndEdit(TState::Closed);
}

bool TProjectsTable::CanModify() const
{
    return FStore != nullptr && !FStore->IsReadOnly();
}

TProject TProjectsTable::Current() const
{
    if (IsEditing())
        return FBuffer;
    return FPosition ? FRows[*FPosition] : TProject {};
}

bool TProjectsTable::LocateByID(std::int64_t id)
{
    const auto row = std::ranges::find(FRows, id, &TProject::ID);
    if (row == FRows.end())
        return false;
    const auto position = static_cast<std::size_t>(row - FRows.begin());
    if (FState != TState::Insert && FPosition == position)
        return true;
    FPosition = position;
    EndEdit(TState::Browse);
    emit CurrentChanged();
    return true;
}

std::optional<std::int64_t> TProjectsTable::LookupByProjectFile(const QString& projectFile) const
{
    const auto row = std::ranges::find(FRows, projectFile, &TProject::ProjectFile);
    return row == FRows.end() ? std::nullopt : std::optional(row->ID);
}

void TProjectsTable::Append()
{
    RequireOpen();
    FBuffer = NewProject();
    FChangedFields = DifferentFields(FBuffer, TProject {});
    SetState(TState::Insert);
    emit CurrentChanged();
}

void TProjectsTable::Edit()
{
    RequireOpen();
    if (IsEditing())
        return;
    if (IsEmpty()) {
        Append();
        return;
    }
    FBuffer = FRows[*FPosition];
    SetState(TState::Edit);
}

void TProjectsTable::SetField(TField field, const QVariant& value)
{
    Edit();
    const TProject before = FBuffer;
    SetFieldValue(FBuffer, field, value);
    FChangedFields.insert(field); // also if equal: Post must write what the user saw and confirmed
    if (FBuffer != before)
        emit FieldChanged(field);
}

void TProjectsTable::TakeBack(TField field)
{
    if (!IsEditing())
        return;
    const TProject before = FBuffer;
    const TProject saved = FState == TState::Insert ? NewProject() : FRows[*FPosition];
    SetFieldValue(FBuffer, field, FieldValue(saved, field));
    if (FState == TState::Edit)
        FChangedFields.erase(field);
    if (FBuffer != before)
        emit FieldChanged(field);
}

void TProjectsTable::Post()
{
    if (!IsEditing())
        return;
    if (FState == TState::Edit && FChangedFields.empty()) {
        Cancel();
        return;
    }
    const TProject shown = FBuffer;
    if (FState == TState::Insert) {
        const TProject stored = FStore->Insert(FBuffer, FChangedFields);
        // A new row gets the ID after the greatest ID in the database. So rows in FRows with this ID or a
        // greater ID are gone: other programs have deleted them.
        std::erase_if(FRows, [&](const TProject& row) { return row.ID >= stored.ID; });
        FRows.push_back(stored);
        FPosition = FRows.size() - 1;
    } else {
        FRows[*FPosition] = FStore->Update(FBuffer, FChangedFields);
    }
    EndEdit(TState::Browse);
    emit RowsChanged();
    AnnounceFound(shown);
}

void TProjectsTable::Cancel()
{
    if (!IsEditing())
        return;
    const bool wasInsert = FState == TState::Insert;
    const TProject shown = FBuffer;
    EndEdit(TState::Browse);
    if (wasInsert)
        emit CurrentChanged();
    else
        AnnounceDifferences(shown);
}

bool TProjectsTable::Delete()
{
    if (IsEmpty() || (FConfirmDelete && !FConfirmDelete()))
        return false;
    if (FState == TState::Insert) {
        Cancel();
        return true;
    }
    const auto row = FRows.begin() + static_cast<std::ptrdiff_t>(*FPosition);
    FStore->Delete(*row);
    FRows.erase(row);
    if (FRows.empty())
        FPosition.reset();
    else
        FPosition = std::min(*FPosition, FRows.size() - 1);
    EndEdit(TState::Browse);
    emit RowsChanged();
    emit CurrentChanged();
    return true;
}

void TProjectsTable::Refresh()
{
    if (FState != TState::Browse)
        return;
    // The version is read before the rows. If a program writes in between, the next Refresh reads again.
    const std::int64_t version = FStore->DataVersion();
    if (version == FDataVersion)
        return;
    std::vector<TProject> rows = FStore->ReadProjects();
    FDataVersion = version;
    if (rows == FRows)
        return;
    const TProject before = Current(); // without a current row the ID is 0, and no row has this ID
    FRows = std::move(rows);
    FPosition.reset();
    if (!FRows.empty()) {
        const auto next = std::ranges::lower_bound(FRows, before.ID, {}, &TProject::ID);
        FPosition = static_cast<std::size_t>(std::min(next, FRows.end() - 1) - FRows.begin());
    }
    emit RowsChanged();
    if (IsSameProject(before, Current()))
        AnnounceFound(before);
    else
        emit CurrentChanged();
}

void TProjectsTable::RequireOpen() const
{
    if (!IsOpen())
        throw TError(TErrorKind::Io, u"The project database is not open"_s);
}

// Empties the buffer, then changes the state.
void TProjectsTable::EndEdit(TState state)
{
    FBuffer = TProject {};
    FChangedFields.clear();
    SetState(state);
}

void TProjectsTable::SetState(TState state)
{
    if (FState == state)
        return;
    FState = state;
    emit StateChanged(state);
}

TFieldSet TProjectsTable::AnnounceDifferences(const TProject& before)
{
    TFieldSet fields = DifferentFields(before, Current());
    for (const TField field : fields)
        emit FieldChanged(field);
    return fields;
}

void TProjectsTable::AnnounceFound(const TProject& before)
{
    TFieldSet fields = AnnounceDifferences(before);
    fields.erase(TField::ID); // a new row gets its ID when it is saved
    if (!fields.empty())
        emit FoundChanged(fields);
}

} // namespace Corvadine
