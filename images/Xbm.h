#pragma once

#include <QSize>

class QIODevice;

namespace Corvadine {

// Returns the size in pixels that an X bitmap
// (https://www.x.org/releases/current/doc/libX11/libX11/libX11.html, "Manipulating Bitmaps") tells. Returns
// an empty size for a file without the two lines that give the width and the height. Moves the position of
// `file`.
QSize XbmSize(QIODevice& file);

// Whether an X bitmap of `size` ends before its last number, or lacks the brace behind that number. Moves the
// position of `file`.
bool EndsXbmEarly(QIODevice& file, QSize size);

} // namespace Corvadine
