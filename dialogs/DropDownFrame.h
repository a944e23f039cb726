#pragma once

#include <QAbstractItemView>
#include <QFrame>

namespace Corvadine {

// The frame that drops down from a control to choose from a list or tree. A click outside or Escape closes
// it; closed, it deletes itself and what it shows.
class TDropDownFrame : public QFrame {
    Q_OBJECT
public:
    // Takes `view`.
    TDropDownFrame(QAbstractItemView* view, QWidget* parent);

    // Opens with `size`, under the control `anchor` or, where the screen ends, above it; the view gets the
    // keyboard.
    void DropDown(const QWidget& anchor, QSize size);

signals:
    // The user clicked `index` or pressed Enter on it; the frame stays open until it is told to close.
    void Chosen(const QModelIndex& index);

private:
    QAbstractItemView* FView;
};

} // namespace Corvadine
