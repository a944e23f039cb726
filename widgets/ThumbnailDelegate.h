#pragma once

#include <QAbstractItemDelegate>

class QFontMetrics;

namespace Corvadine {

// Paints a row of TThumbnailModel: the picture, the info line and the file name, all centered. A selected
// cell has the color of buttons. A cell under the pointer looks like any other.
class TThumbnailDelegate : public QAbstractItemDelegate {
    Q_OBJECT
public:
    using QAbstractItemDelegate::QAbstractItemDelegate;

    // Returns the size of the smallest cell that holds a thumbnail and its two lines of text.
    static QSize CellSize(const QFontMetrics& font);

    void paint(
        QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace Corvadine
