#pragma once

#include "app/FieldEditor.h"

#include <QColor>
#include <QPushButton>

#include <optional>

namespace Corvadine {

// Shows and edits a color field: a drop-down of named colors, with "More…" for any other color. A choice is
// written to the field at once. The field's integer has red in bits 0 to 7, green in 8 to 15 and blue in 16
// to 23. The invalid color -1 is painted as white with a stroke through it, because a run uses white for it.
class TColorBox : public QPushButton, public TFieldEditor {
    Q_OBJECT

public:
    TColorBox(TProjectsTable& table, TField field, QWidget* parent = nullptr);

    // Shows a color until the field is shown again. Does not write the field. `stored` has the form of
    // the field's integer.
    void ShowColor(int stored);

    // Whether a color is shown.
    bool HasValue() const { return FShown.has_value(); }
    // The color shown: that of the field, or that of ShowColor(). REQUIRES: HasValue().
    int Value() const { return *FShown; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void ShowValue(const QVariant& value) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    QColor ShownColor() const; // white if the field has no value
    void OpenList();
    void AskForColor();
    void Choose(const QColor& color);
    void PaintSwatch(QPainter& painter, const QRect& area) const;

    std::optional<int> FShown;
};

} // namespace Corvadine
