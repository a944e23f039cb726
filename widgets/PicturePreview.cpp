#include "widgets/PicturePreview.h"

#include <QPainter>

namespace Corvadine {

namespace {

constexpr int Padding = 8;

} // namespace

TPicturePreview::TPicturePreview(QWidget* parent) : QFrame(parent)
{
    setFrameShape(StyledPanel);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    setContextMenuPolicy(Qt::PreventContextMenu);
}

void TPicturePreview::SetImage(const QImage& image)
{
    FImage = image;
    update();
}

void TPicturePreview::paintEvent(QPaintEvent* event)
{
    QFrame::paintEvent(event);
    if (FImage.isNull())
        return;
    const QRect room = contentsRect().marginsRemoved({ Padding, Padding, Padding, Padding });
    QRect place(QPoint(), FImage.size().scaled(room.size(), Qt::KeepAspectRatio));
    place.moveCenter(room.center());
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, FImage);
}

} // namespace Corvadine
