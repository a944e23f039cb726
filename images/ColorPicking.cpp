#include "images/ColorPicking.h"

#include "base/Color.h"

#include <cmath>

namespace Corvadine {

QRect FittedRect(QSize picture, QSize view)
{
    const QSize fitted = picture.scaled(view, Qt::KeepAspectRatio).expandedTo({ 1, 1 });
    return { QPoint((view.width() - fitted.width()) / 2, (view.height() - fitted.height()) / 2), fitted };
}

QPoint PixelUnder(QPoint pixel, QSize picture, QSize view)
{
    const QRect fitted = FittedRect(picture, view);
    const QPointF center = QPointF(pixel - fitted.topLeft()) + QPointF(0.5, 0.5);
    return { static_cast<int>(std::floor(center.x() * picture.width() / fitted.width())),
        static_cast<int>(std::floor(center.y() * picture.height() / fitted.height())) };
}

int ColorUnder(QPoint pixel, const QImage& picture, QSize view)
{
    const QPoint source = PixelUnder(pixel, picture.size(), view);
    return picture.valid(source) ? TColor::FromRgb(picture.pixel(source)).ToStored() : -1;
}

} // namespace Corvadine
