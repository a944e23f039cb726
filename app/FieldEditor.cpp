#include "app/FieldEditor.h"

#include "base/Error.h"
#include "store/ProjectsTable.h"

#include <QWidget>

namespace Corvadine {

bool TFieldEditor::IsFieldEditor(const QWidget* widget)
{
    // A drop-down list is a window of its own, but the control is among its parents.
    for (; widget; widget = widget->parentWidget())
        if (dynamic_cast<const TFieldEditor*>(widget))
            return true;
    return false;
}

TFieldEditor::TFieldEditor(TProjectsTable& table, TField field, QWidget& widget)
    : FTable(table), FField(field), FWidget(widget)
{
}

void TFieldEditor::Attach()
{
    QObject::connect(&FTable, &TProjectsTable::CurrentChanged, &FWidget, [this] { Reload(); });
    QObject::connect(&FTable, &TProjectsTable::FieldChanged, &FWidget, [this](TField field) {
        if (field == FField)
            Reload();
    });
    QObject::connect(&FTable, &TProjectsTable::StateChanged, &FWidget, [this] {
        if (!FTable.IsEditing()) // the start of an edit must not reset values that are not written yet
            Reload();
    });
    Reload();
}

void TFieldEditor::Write(const QVariant& value)
{
    if (FTable.IsEmpty() || value == FieldValue(FTable.Current(), FField)) {
        Reload();
        return;
    }
    try {
        FTable.SetField(FField, value);
    } catch (const TError& error) {
        Reload();
        if (FErrorHandler)
            FErrorHandler(error.Text());
    }
}

void TFieldEditor::TakeBack()
{
    FTable.TakeBack(FField);
}

void TFieldEditor::Reload()
{
    const bool hasRow = !FTable.IsEmpty();
    ShowValue(hasRow ? FieldValue(FTable.Current(), FField) : QVariant());
    FWidget.setEnabled(hasRow);
}

} // namespace Corvadine
