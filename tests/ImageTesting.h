#pragma once

#include <QImage>

// What the tests of images share.
namespace Corvadine::Testing {

// Returns an image whose pixel at (x, y) is `colorAt(x, y)`.
template <typename TColorAt> QImage Painted(QSize size, QImage::Format format, TColorAt colorAt)
{
    QImage image(size, format);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, colorAt(x, y));
    return image;
}

} // namespace Corvadine::Testing
