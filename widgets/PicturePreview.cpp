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

void TPicturePreview::SetImage(const QImage& image, const QString& text)
{
    FImage = image;
    setAccessibleDescription(text);
    update();
}

void TPicturePreview::paintEvent(QPaintEvent* event)
{
    QFrame::paintEvent(event);
    const QRect room = contentsRect().marginsRemoved({ Padding, Padding, Padding, Padding });
    QPainter painter(this);
    if (FImage.isNull()) {
        painter.drawText(room, Qt::AlignCenter | Qt::TextWordWrap, accessibleDescription());
        return;
    }
    QRect place(QPoint(), FImage.size().scaled(room.size(), Qt::KeepAspectRatio));
    place.moveCenter(room.center());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, FImage);
}

} // namespace Corvadine
