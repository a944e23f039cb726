#pragma once

#include <QImage>

class QIODevice;

namespace Corvadine {

// Decodes a TIFF that has 8 bits per sample and either straight alpha or four inks. Qt's decoder multiplies
// colors by straight alpha, so their low bits are lost. It also reduces four inks to three channels, so the
// profile of the inks cannot be applied. The returned picture is upright. A picture with alpha has
// Format_ARGB32 and keeps its color space. A picture of inks is converted to sRGB and has Format_RGB32.
// Returns a null image for all other files, for inks without a profile, and for damaged files. Moves the
// position of `file`.
QImage ReadTiffSamples(QIODevice& file);

} // namespace Corvadine
