#include "dialogs/PicturePreview.h"

#include <QPainter>

namespace Corvadine {

TPicturePreview::TPicturePreview(QWidget* parent) : QWidget(parent)
{
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    setContentsMargins(8, 8, 8, 8);
    setContextMenuPolicy(Qt::PreventContextMenu);
}

void TPicturePreview::SetImage(const QImage& image)
{
    FImage = image;
    update();
}

void TPicturePreview::paintEvent(QPaintEvent*)
{
    if (FImage.isNull())
        return;
    const QRect room = contentsRect();
    QRect place(QPoint(), FImage.size().scaled(room.size(), Qt::KeepAspectRatio));
    place.moveCenter(room.center());
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, FImage);
}

} // namespace Corvadine
