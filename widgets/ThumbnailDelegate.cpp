#include "widgets/ThumbnailDelegate.h"

#include "widgets/ThumbnailModel.h"

#include <QListView>
#include <QPainter>

#include <cmath>

namespace Corvadine {

namespace {

constexpr int Margin = 6; // around picture and lines
constexpr int Gap = 4;    // between the picture and the first line

// Moves `point` to the nearest device pixel, so that the picture is not blurred.
QPointF OnDevicePixel(QPointF point, double ratio)
{
    return { std::round(point.x() * ratio) / ratio, std::round(point.y() * ratio) / ratio };
}

void PaintPicture(QPainter& painter, const QRect& area, const QImage& picture)
{
    const QSizeF size = picture.deviceIndependentSize();
    const QPointF corner(
        area.x() + (area.width() - size.width()) / 2, area.y() + (area.height() - size.height()) / 2);
    // A small picture is enlarged where the screen has more than one device pixel per logical pixel.
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(OnDevicePixel(corner, painter.device()->devicePixelRatioF()), picture);
}

// Paints a line of text at the top of `area`. A long text is cut in the middle, because names differ
// at both ends.
void PaintLine(QPainter& painter, const QRect& area, const QString& text)
{
    const QString shown = painter.fontMetrics().elidedText(text, Qt::ElideMiddle, area.width());
    painter.drawText(area, Qt::AlignHCenter | Qt::AlignTop | Qt::TextSingleLine, shown);
}

} // namespace

QSize TThumbnailDelegate::CellSize(const QFontMetrics& font)
{
    constexpr int Side = TThumbnailModel::ThumbnailSide;
    return { Side + 2 * Margin, Side + 2 * Margin + Gap + 2 * font.lineSpacing() };
}

void TThumbnailDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    painter->save();
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    if (selected)
        painter->fillRect(option.rect, option.palette.button());
    QRect area = option.rect.marginsRemoved({ Margin, Margin, Margin, Margin });
    const QRect pictureArea(area.topLeft(), QSize(area.width(), TThumbnailModel::ThumbnailSide));
    PaintPicture(*painter, pictureArea, index.data(Qt::DecorationRole).value<QImage>());

    painter->setFont(option.font);
    painter->setPen(option.palette.color(selected ? QPalette::ButtonText : QPalette::Text));
    area.setTop(pictureArea.bottom() + 1 + Gap);
    PaintLine(*painter, area, index.data(TThumbnailModel::InfoRole).toString());
    area.translate(0, option.fontMetrics.lineSpacing());
    PaintLine(*painter, area, index.data(Qt::DisplayRole).toString());
    painter->restore();
}

// Returns the size of a whole cell of the grid, because the view paints no item larger than its size hint.
QSize TThumbnailDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const
{
    const auto* const list = qobject_cast<const QListView*>(option.widget);
    return list && list->gridSize().isValid() ? list->gridSize() : CellSize(option.fontMetrics);
}

} // namespace Corvadine
