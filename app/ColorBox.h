#pragma once

#include "app/FieldEditor.h"

#include <QColor>
#include <QPushButton>

#include <functional>
#include <optional>
#include <utility>

namespace Corvadine {

// A colour field, as a drop-down of named colours that ends in "More…" for any other; a choice writes it.
// The field's integer has red in bits 0 to 7, green in 8 to 15 and blue in 16 to 23. The invalid colour -1
// shows as a crossed white, which is what it generates.
class TColorBox : public QPushButton, public TFieldEditor {
    Q_OBJECT

public:
    // Asks the user for any colour, starting from the given one; nothing if cancelled.
    using TAskColor = std::function<std::optional<QColor>(const QColor&)>;

    TColorBox(TProjectsTable& table, TField field, QWidget* parent = nullptr);

    // Replaces the colour dialog.
    void SetColorDialog(TAskColor ask) { FAskColor = std::move(ask); }

    // Shows a stored colour without writing it, until the field is shown again.
    void ShowColor(int stored);

    // What it shows, which the field holds unless ShowColor() was called.
    bool HasValue() const { return FShown.has_value(); }
    // REQUIRES: HasValue().
    int Value() const { return *FShown; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void ShowValue(const QVariant& value) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    QColor ShownColor() const; // white when there is none
    void OpenList();
    void AskForColor();
    void Choose(const QColor& color);
    std::optional<QColor> AskInDialog(const QColor& current);
    void PaintSwatch(QPainter& painter, const QRect& area) const;

    std::optional<int> FShown;
    TAskColor FAskColor;
};

} // namespace Corvadine
