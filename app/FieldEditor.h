#pragma once

#include "store/Project.h"

#include <QString>
#include <QVariant>

#include <functional>
#include <utility>

class QWidget;

namespace Corvadine {

class TProjectsTable;

// The base of the controls that show and change one field of the current project. A change starts editing the
// row and sets the field. The command "Save Changes" saves the row. Without a current row the control is
// blank and disabled. The control shows the field again when another row becomes current, when the field
// changes, and when editing ends. So "Cancel Changes" also resets the control.
//
// A control inherits this class and a class of Qt, and calls Attach() at the end of its constructor.
class TFieldEditor {
public:
    // Returns whether `widget` is an editor of a field, or a part of such an editor.
    static bool IsFieldEditor(const QWidget* widget);

    TFieldEditor(const TFieldEditor&) = delete;
    TFieldEditor& operator=(const TFieldEditor&) = delete;

    // When a change fails, the control shows the value of the field again. Then the control calls `handler`
    // with the text of the error. REQUIRES: `handler` does not throw.
    void SetErrorHandler(std::function<void(const QString&)> handler) { FErrorHandler = std::move(handler); }

protected:
    // `table` must outlive the widget. `widget` is the control itself.
    TFieldEditor(TProjectsTable& table, TField field, QWidget& widget);
    virtual ~TFieldEditor() = default;

    // Shows `value`, which has the type that FieldValue() returns. An invalid `value` leaves the control
    // blank. Must not write the field.
    virtual void ShowValue(const QVariant& value) = 0;

    // Shows the field now and whenever the table announces a change. REQUIRES: the control is constructed,
    // because this calls ShowValue().
    void Attach();

    // Sets the field of the current row. If there is no row, or if the field has this value already, only
    // shows the field again. Throws no TError, but passes the text of a TError to the error handler.
    void Write(const QVariant& value);

    // If the current row is being edited, sets the field back to its saved value.
    void TakeBack();

    // Shows the field of the current row.
    void Reload();

private:
    TProjectsTable& FTable;
    TField FField;
    QWidget& FWidget;
    std::function<void(const QString&)> FErrorHandler;
};

} // namespace Corvadine
