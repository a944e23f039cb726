#pragma once

#include <QRect>

class QIODevice;

namespace Corvadine {

// The first picture of a GIF file.
struct TGifPicture {
    QRect Place;           // on the canvas, in pixels; empty if the file has no picture
    bool EndsEarly = true; // whether the file ends before the picture does
};

// Moves the position of `file`. REQUIRES: the file begins as a GIF file does.
TGifPicture FirstGifPicture(QIODevice& file);

} // namespace Corvadine
