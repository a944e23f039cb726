#pragma once

#include <QImage>

class QIODevice;

namespace Corvadine {

// Decodes a JPEG that has four inks and their ICC profile, and converts it to sRGB by this profile. Qt's
// decoder reduces the inks to three channels, which the profile does not describe. Returns Format_RGB32, not
// turned upright. Returns a null image for other files and damaged files. Moves the position of `file`.
QImage ReadCmykJpeg(QIODevice& file);

} // namespace Corvadine
