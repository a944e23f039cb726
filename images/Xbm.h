#pragma once

#include <QSize>

class QIODevice;

namespace Corvadine {

// Returns the size in pixels that an X bitmap
// (https://www.x.org/releases/current/doc/libX11/libX11/libX11.html, "Manipulating Bitmaps") tells. Returns
// an empty size for a file without the two lines of an X bitmap. Moves the position of `file`.
QSize XbmSize(QIODevice& file);

// Whether an X bitmap of `size` ends before its last number, or without the brace behind it. Moves the
// position of `file`.
bool EndsXbmEarly(QIODevice& file, QSize size);

} // namespace Corvadine
