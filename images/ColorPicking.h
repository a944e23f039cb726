#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QSize>

// Tells where a view shows a picture, and which color a pixel of the view shows. Sizes and pixels of views
// are device pixels.
namespace Corvadine {

// Returns the rectangle of the view that shows the whole picture: centered, and as large as the picture's
// aspect ratio allows.
QRect FittedRect(QSize picture, QSize view);

// Returns the picture's pixel under the center of `pixel` of the view. If `pixel` is in the margin beside the
// picture, a coordinate of the result is negative, or not less than the picture's width or height.
QPoint PixelUnder(QPoint pixel, QSize picture, QSize view);

// Returns the color of the picture's pixel under `pixel` of the view, without alpha: red in the lowest byte,
// then green and blue. Returns -1 in the margin beside the picture.
int ColorUnder(QPoint pixel, const QImage& picture, QSize view);

} // namespace Corvadine
