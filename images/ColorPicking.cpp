#include "images/ColorPicking.h"

#include "base/Color.h"

#include <cmath>

namespace Corvadine {

QRect FittedRect(QSize picture, QSize view)
{
    const QSize fitted = picture.scaled(view, Qt::KeepAspectRatio).expandedTo({ 1, 1 });
    return { QPoint((view.width() - fitted.width()) / 2, (view.height() - fitted.height()) / 2), fitted };
}

QPoint PixelUnder(QPointF point, QSize picture, QSize view)
{
    const QRect fitted = FittedRect(picture, view);
    return { static_cast<int>(std::floor((point.x() - fitted.x()) * picture.width() / fitted.width())),
        static_cast<int>(std::floor((point.y() - fitted.y()) * picture.height() / fitted.height())) };
}

int ColorUnder(QPointF point, const QImage& picture, QSize view)
{
    const QPoint pixel = PixelUnder(point, picture.size(), view);
    return picture.valid(pixel) ? TColor::FromRgb(picture.pixel(pixel)).ToStored() : -1;
}

} // namespace Corvadine
