#pragma once

#include <QImage>

class QIODevice;

namespace Corvadine {

// Decodes a TIFF that has 8 bits per sample and either straight alpha or four inks. Qt's decoder multiplies
// colors by straight alpha, so their low bits are lost. It reduces four inks to three channels, so a profile
// of inks no longer fits. Returns an upright picture: with alpha, Format_ARGB32 and its color space; with
// inks, Format_RGB32 in sRGB, converted by their profile. Returns a null image for all other files, for inks
// without a profile, and for damaged files. Moves the position of `file`.
QImage ReadTiffSamples(QIODevice& file);

} // namespace Corvadine
