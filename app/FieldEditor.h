#pragma once

#include "store/Project.h"

#include <QString>
#include <QVariant>

#include <functional>
#include <utility>

class QWidget;

namespace Corvadine {

class TProjectsTable;

// What the controls have in common that show and change one field of the current project. A change puts the
// row into editing and sets the field; saving is for a command. Without a current row the control is blank
// and disabled. What it shows is read again when the row or the field changes and when an edit ends, so that
// cancelling takes back what is shown too.
// A widget inherits it beside its Qt class and calls Attach() at the end of its constructor.
class TFieldEditor {
public:
    // Whether `widget` is such a control or a part of one.
    static bool IsFieldEditor(const QWidget* widget);

    TFieldEditor(const TFieldEditor&) = delete;
    TFieldEditor& operator=(const TFieldEditor&) = delete;

    TField Field() const { return FField; }

    // Told the error's text when a change could not be made; the control then shows the field as it is. Must
    // not throw.
    void SetErrorHandler(std::function<void(const QString&)> handler) { FErrorHandler = std::move(handler); }

protected:
    // `table` must outlive the widget; `widget` is the control itself.
    TFieldEditor(TProjectsTable& table, TField field, QWidget& widget);
    virtual ~TFieldEditor() = default;

    // Shows the field's value, of the type that FieldValue() gives; an invalid one is shown as nothing. Must
    // not write.
    virtual void ShowValue(const QVariant& value) = 0;

    // Follows the table from now on. REQUIRES: ShowValue() works.
    void Attach();

    // Sets the field of the current row; without a row or a difference, only shows the value again.
    void Write(const QVariant& value);

    // Shows what the current row holds.
    void Reload();

private:
    TProjectsTable& FTable;
    TField FField;
    QWidget& FWidget;
    std::function<void(const QString&)> FErrorHandler;
};

} // namespace Corvadine
