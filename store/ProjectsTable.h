#pragma once

#include "store/Project.h"

#include <QObject>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace Corvadine {

class TProjectStore;

// A cursor over the projects of a store: one current row that can be edited, and announcements that a window
// can follow. The rows are in ascending ID, with the values that were last read. Open and Refresh read all
// rows. Post reads the row that it has written.
//
// Edits stay in a buffer until Post writes them. Moving to another row or closing drops them. Moving to the
// row that is current already does nothing.
//
// Announcements come when the object is consistent again, so a slot may call the object's functions. If
// several apply, they come in the order StateChanged, RowsChanged, CurrentChanged, FieldChanged,
// FoundChanged. CurrentChanged comes without FieldChanged and FoundChanged, because all fields may differ. If
// a function throws, it has announced nothing and changed nothing, unless its comment says otherwise. Use on
// the store's thread. A slot must not throw.
class TProjectsTable : public QObject {
    Q_OBJECT

public:
    enum class TState {
        Closed,
        Browse, // the current row, if any, is as last read
        Edit,   // the current row has a buffer, which Post will write
        Insert, // the current row is new and exists only in the buffer
    };

    explicit TProjectsTable(QObject* parent = nullptr);

    // Reads all rows; the first becomes current. `store` must exist until Close(), or until the table is
    // destroyed. Throws TError(Io). REQUIRES: closed.
    void Open(TProjectStore& store);

    // Forgets rows and pending edits. Announces only the state.
    void Close();

    TState State() const { return FState; }
    bool IsOpen() const { return FState != TState::Closed; }
    // Whether there are edits that wait for Post or Cancel.
    bool IsEditing() const { return FState == TState::Edit || FState == TState::Insert; }
    // Whether the database file can be written.
    bool CanModify() const;

    // Whether there is no current row: nothing is saved and nothing is being inserted.
    bool IsEmpty() const { return !FPosition && FState != TState::Insert; }
    // The saved rows, without pending edits. Valid until Post, Delete, Refresh or Close.
    const std::vector<TProject>& Rows() const { return FRows; }
    // The current row with its pending edits, or a blank record if there is none.
    TProject Current() const;

    // Makes the saved row with this ID current. Returns false, and does nothing, if there is no such row.
    bool LocateByID(std::int64_t id);

    // Returns the ID of the saved row with exactly this project file, or nothing if there is no such row.
    std::optional<std::int64_t> LookupByProjectFile(const QString& projectFile) const;

    // Drops pending edits and makes a new row current, filled with the defaults of a new project.
    // Throws TError(Io) when closed.
    void Append();

    // Starts editing the current row, or appends one if there is none. Does nothing while editing.
    // Throws TError(Io) when closed.
    void Edit();

    // Starts editing as Edit does, sets one field of the buffer, and announces the field if its value
    // differs. Throws what Edit and SetFieldValue throw. If SetFieldValue throws, the row stays in editing.
    // REQUIRES: field is not ID.
    void SetField(TField field, const QVariant& value);

    // Sets one field of the buffer back: to the value of the saved row, or when inserting, to the default of
    // a new project. Post then does not write the field, unless the row is new. Does nothing when not
    // editing. REQUIRES: the field is not ID.
    void TakeBack(TField field);

    // Writes only the fields that were set since editing began, then takes over the row as the database has
    // it now. Does nothing when not editing. Throws what TProjectStore::Insert and Update throw. After
    // a throw, the row is still being edited and keeps its values.
    void Post();

    // Drops pending edits. After an append, the former row is current again. Does nothing when not editing.
    void Cancel();

    // Deletes the current row. The next row becomes current, or the last if there is no next. A row being
    // inserted is only dropped. Returns false, with nothing changed, if there is no row or the confirmation
    // was refused. Throws TError(Io).
    bool Delete();

    // `confirm` is called before each delete. If `confirm` returns false, nothing is deleted.
    void SetDeleteConfirmation(std::function<bool()> confirm) { FConfirmDelete = std::move(confirm); }

    // Reads all rows again if other programs have written to the database. Otherwise Refresh costs little.
    // The current row stays current. If its project is gone, the next row becomes current, or the last row.
    // The next row may have the ID of the project that is gone. Does nothing while a row is being edited,
    // because the edits would be lost. Throws TError(Io). If the database is locked, Refresh throws at once
    // and does not wait.
    void Refresh();

signals:
    // Another row is current, or there is none now.
    void CurrentChanged();
    void StateChanged(Corvadine::TProjectsTable::TState state);
    // Rows() has changed.
    void RowsChanged();
    // A field of the current row has another value: it was set, taken back, or found changed in the database.
    void FieldChanged(Corvadine::TField field);
    // Post or Refresh found that another program has changed these fields of the current row.
    void FoundChanged(const Corvadine::TFieldSet& fields);

private:
    void RequireOpen() const;
    void EndEdit(TState state);
    void SetState(TState state);
    TFieldSet AnnounceDifferences(const TProject& before);
    void AnnounceFound(const TProject& before);

    TProjectStore* FStore = nullptr; // null while closed
    std::vector<TProject> FRows;
    std::optional<std::int64_t> FDataVersion; // at the last Refresh
    std::optional<std::size_t> FPosition;     // of the current row; while inserting, of the former row
    TState FState = TState::Closed;
    TProject FBuffer;         // the current row while editing
    TFieldSet FChangedFields; // what was set in the buffer
    std::function<bool()> FConfirmDelete;
};

} // namespace Corvadine
