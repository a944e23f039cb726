#pragma once

#include <QAbstractItemView>
#include <QFrame>

namespace Corvadine {

// Returns the place of a drop-down of `size` for the control `anchor`, in screen pixels. The place is below
// `anchor`, or above `anchor` if there is no room below. The place lies within the screen, so this place can
// be smaller than `size`.
QRect DropDownPlace(const QWidget& anchor, QSize size);

// A frame that drops down from a control and shows a list or tree. A click outside or Escape closes the
// frame. A closed frame deletes itself and its view.
class TDropDownFrame : public QFrame {
    Q_OBJECT
public:
    // Takes ownership of `view`.
    TDropDownFrame(QAbstractItemView* view, QWidget* parent);

    // Opens at DropDownPlace() and gives the view the keyboard focus.
    void DropDown(const QWidget& anchor, QSize size);

signals:
    // The user clicked `index` or pressed Enter on it. The frame stays open until its owner closes it.
    void Chosen(const QModelIndex& index);

private:
    QAbstractItemView* FView;
};

} // namespace Corvadine
