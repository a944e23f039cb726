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
// can follow; a program without a window uses it alike. Rows are in ascending ID and as they were last read:
// Open, Refresh and, for the one row, Post look at the database.
//
// Edits live in a buffer until Post writes them. Moving to another row drops them, as does closing; moving to
// the row that is current already does nothing.
//
// Announcements come when the object is consistent again, so a slot may call it. If several apply they come
// in the order StateChanged, RowsChanged, CurrentChanged, FieldChanged; CurrentChanged speaks for all the
// fields. A function that throws has announced nothing and changed nothing unless it says so. Use on the
// store's thread; a slot must not throw.
class TProjectsTable : public QObject {
    Q_OBJECT

public:
    enum class TState {
        Closed,
        Browse, // the current row, if any, is as last read
        Edit,   // the current row has a buffer that Post will write
        Insert, // the current row is new and exists in the buffer alone
    };

    explicit TProjectsTable(QObject* parent = nullptr);

    // Reads all rows; the first becomes current. `store` must outlive the table or its Close().
    // Throws TError(Database). REQUIRES: closed.
    void Open(TProjectStore& store);

    // Forgets rows and pending edits; announces the state only.
    void Close();

    TState State() const { return FState; }
    bool IsOpen() const { return FState != TState::Closed; }
    // Whether something waits for Post or Cancel.
    bool IsEditing() const { return FState == TState::Edit || FState == TState::Insert; }
    // Whether the database file can be written.
    bool CanModify() const;

    // Whether there is no current row: nothing is saved and nothing is being inserted.
    bool IsEmpty() const { return !FPosition && FState != TState::Insert; }
    // The saved rows, without pending edits. Valid until a row is saved or deleted or the rows are read
    // again.
    const std::vector<TProject>& Rows() const { return FRows; }
    // The current row with its pending edits; a blank record if there is none.
    TProject Current() const;

    // Makes the saved row with this ID current. False, and nothing happens, when there is none.
    bool LocateByID(std::int64_t id);

    // The ID of the saved row with exactly this project file.
    std::optional<std::int64_t> LookupByProjectFile(const QString& projectFile) const;

    // Drops pending edits and makes a new row current, filled with what a new project starts from.
    // Throws TError(Database) when closed.
    void Append();

    // Starts editing the current row unless it is being edited already; without a current row, appends one.
    // Throws TError(Database) when closed.
    void Edit();

    // Starts editing as Edit does and sets one field of the buffer; announces the field if its value differs.
    // Throws what Edit and SetFieldValue throw; a value that does not fit leaves the row being edited.
    // REQUIRES: field is not ID.
    void SetField(TField field, const QVariant& value);

    // Writes the fields that were set since editing began, and only those, then shows the row as the database
    // has it now. Does nothing when browsing. Throws what TProjectStore::Insert and Update throw; the row is
    // then still being edited, with its values.
    void Post();

    // Drops pending edits; after an append the row before it is current again. Does nothing when browsing.
    void Cancel();

    // Deletes the current row; the next one becomes current, or the last if there is no next. A row being
    // inserted is just dropped. False when there is no row or the confirmation was refused: nothing has
    // changed then. Throws TError(Database).
    bool Delete();

    // Asked before each delete; false refuses. Without one, nothing is asked.
    void SetDeleteConfirmation(std::function<bool()> confirm) { FConfirmDelete = std::move(confirm); }

    // Follows what other programs have written since the rows were read: reads all of them again and stays
    // on the current one; if it is gone, on the next, or the last. Does nothing, and cheaply, if nobody has
    // written, and nothing while a row is being edited, whose values would be lost. Throws TError(Database),
    // at once when the database is locked at that moment.
    void Refresh();

signals:
    // Another row is current, or none.
    void CurrentChanged();
    void StateChanged(Corvadine::TProjectsTable::TState state);
    // Rows() has changed.
    void RowsChanged();
    // A field of the current row reads differently: set, taken back by Cancel, or found changed in the
    // database.
    void FieldChanged(Corvadine::TField field);

private:
    void RequireOpen() const;
    void MoveTo(std::size_t position);
    void EndEdit();
    void SetState(TState state);
    void AnnounceDifferences(const TProject& before, const TProject& after);
    std::optional<std::size_t> PositionOf(std::int64_t id) const;

    TProjectStore* FStore = nullptr; // null while closed
    std::vector<TProject> FRows;
    std::optional<std::int64_t> FDataVersion; // at the last Refresh
    std::optional<std::size_t> FPosition;     // of the current row; while inserting, of the one to return to
    TState FState = TState::Closed;
    TProject FBuffer;         // the current row while editing
    TFieldSet FChangedFields; // what was set in the buffer
    std::function<bool()> FConfirmDelete;
};

} // namespace Corvadine
