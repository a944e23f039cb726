#pragma once

#include "app/FieldEditor.h"

#include <QColor>
#include <QPushButton>

#include <optional>

namespace Corvadine {

// Shows and edits a color field. The drop-down has the named colors, and "More…" for any other color. A
// choice is written to the field at once. The field's integer has red in bits 0 to 7, green in 8 to 15 and
// blue in 16 to 23. The invalid color -1 is painted as white with a stroke through it, because a generation
// run uses white for -1.
class TColorBox : public QPushButton, public TFieldEditor {
    Q_OBJECT

public:
    TColorBox(TProjectsTable& table, TField field, QWidget* parent = nullptr);

    // Shows the color `stored` until the control shows the color of its field again. Does not write the
    // field. `stored` has the form of the field's integer.
    void ShowColor(int stored);

    // Returns whether a color is shown.
    bool HasValue() const { return FShown.has_value(); }
    // Returns the shown color in the form of the field's integer. REQUIRES: HasValue().
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
