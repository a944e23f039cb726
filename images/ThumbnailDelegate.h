#pragma once

#include <QAbstractItemDelegate>

class QFontMetrics;

namespace Corvadine {

// Paints a row of TThumbnailModel: the picture, under it the info line and the file name, all centred in the
// cell. A selected cell has the colour of buttons; the pointer changes nothing.
class TThumbnailDelegate : public QAbstractItemDelegate {
    Q_OBJECT
public:
    using QAbstractItemDelegate::QAbstractItemDelegate;

    // The least room for a thumbnail with its two lines.
    static QSize CellSize(const QFontMetrics& font);

    void paint(
        QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace Corvadine
