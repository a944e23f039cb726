#pragma once

#include <QImage>

class QIODevice;

namespace Corvadine {

// Decodes a TIFF with 8 bits a sample whose samples Qt's decoder mixes: it multiplies colors by straight
// alpha, which loses their low bits, and it reduces four inks to three channels, which a profile of inks does
// not describe. Returns an upright picture: Format_ARGB32 with its color space, or for inks Format_RGB32,
// which their profile has brought to sRGB. Returns a null image for all other files, and for damaged ones.
// Moves the position of `file`.
QImage ReadTiffSamples(QIODevice& file);

} // namespace Corvadine
