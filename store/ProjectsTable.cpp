#include "store/ProjectsTable.h"

#include "base/Error.h"
#include "store/ProjectStore.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace Corvadine {

namespace {

constexpr int White = 0xFFFFFF;

struct TDefault {
    TField Field;
    int Value;
};

// What a new project starts from: 256 colours on white for all platforms, filtered with Mitchell. The texts
// are left to whoever appends.
constexpr TDefault NewRowDefaults[] {
    { TField::Compression, 6 },
    { TField::PixelFormat, static_cast<int>(TOutputFormat::Colors256) },
    { TField::PickColor, White },
    { TField::TwoxSize, 400 },
    { TField::IncAndroid, true },
    { TField::IncIPhone, true },
    { TField::IncIPad, true },
    { TField::IncWindows, true },
    { TField::ResampleFilter, 6 },
};

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
    EndEdit();
    SetState(TState::Closed);
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
    const auto position = PositionOf(id);
    if (position)
        MoveTo(*position);
    return position.has_value();
}

std::optional<std::int64_t> TProjectsTable::LookupByProjectFile(const QString& projectFile) const
{
    const auto row = std::ranges::find(FRows, projectFile, &TProject::ProjectFile);
    return row == FRows.end() ? std::nullopt : std::optional(row->ID);
}

void TProjectsTable::Append()
{
    RequireOpen();
    EndEdit();
    for (const auto& [field, value] : NewRowDefaults) {
        SetFieldValue(FBuffer, field, value);
        FChangedFields.insert(field);
    }
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
    const QVariant before = FieldValue(FBuffer, field);
    SetFieldValue(FBuffer, field, value);
    FChangedFields.insert(field); // also when equal: what the user saw and chose is what Post writes
    if (FieldValue(FBuffer, field) != before)
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
        FRows.push_back(FStore->Insert(FBuffer, FChangedFields));
        FPosition = FRows.size() - 1;
    } else {
        FRows[*FPosition] = FStore->Update(FBuffer, FChangedFields);
    }
    EndEdit();
    SetState(TState::Browse);
    emit RowsChanged();
    AnnounceDifferences(shown, Current());
}

void TProjectsTable::Cancel()
{
    if (!IsEditing())
        return;
    const bool wasInsert = FState == TState::Insert;
    const TProject shown = FBuffer;
    EndEdit();
    SetState(TState::Browse);
    if (wasInsert)
        emit CurrentChanged();
    else
        AnnounceDifferences(shown, Current());
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
    EndEdit();
    SetState(TState::Browse);
    emit RowsChanged();
    emit CurrentChanged();
    return true;
}

void TProjectsTable::Refresh()
{
    if (FState != TState::Browse)
        return;
    const std::int64_t version = FStore->DataVersion(); // before the rows: better read twice than not at all
    if (version == FDataVersion)
        return;
    std::vector<TProject> rows = FStore->ReadProjects();
    FDataVersion = version;
    if (rows == FRows)
        return;
    const TProject before = Current(); // a blank one if there is none, whose ID 0 no row has
    FRows = std::move(rows);
    FPosition.reset();
    if (!FRows.empty()) {
        const auto next = std::ranges::lower_bound(FRows, before.ID, {}, &TProject::ID);
        FPosition = static_cast<std::size_t>(std::min(next, FRows.end() - 1) - FRows.begin());
    }
    emit RowsChanged();
    if (Current().ID == before.ID)
        AnnounceDifferences(before, Current());
    else
        emit CurrentChanged();
}

void TProjectsTable::RequireOpen() const
{
    if (!IsOpen())
        throw TError(TErrorKind::Database, QStringLiteral("The project database is not open"));
}

void TProjectsTable::MoveTo(std::size_t position)
{
    if (FState != TState::Insert && FPosition == position)
        return;
    FPosition = position;
    EndEdit();
    SetState(TState::Browse);
    emit CurrentChanged();
}

// Leaves it to the caller to change the state, once everything else is in place.
void TProjectsTable::EndEdit()
{
    FBuffer = TProject {};
    FChangedFields.clear();
}

void TProjectsTable::SetState(TState state)
{
    if (FState == state)
        return;
    FState = state;
    emit StateChanged(state);
}

void TProjectsTable::AnnounceDifferences(const TProject& before, const TProject& after)
{
    for (const TField field : AllFields)
        if (FieldValue(before, field) != FieldValue(after, field))
            emit FieldChanged(field);
}

std::optional<std::size_t> TProjectsTable::PositionOf(std::int64_t id) const
{
    const auto row = std::ranges::find(FRows, id, &TProject::ID);
    if (row == FRows.end())
        return std::nullopt;
    return static_cast<std::size_t>(row - FRows.begin());
}

} // namespace Corvadine
