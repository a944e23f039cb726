#pragma once

#include <QSize>

class QIODevice;

namespace Corvadine {

// Returns the size in pixels of the image `index`, from 0, in a Windows icon
// (https://learn.microsoft.com/en-us/previous-versions/ms997538(v=msdn.10)). Reads the size from the image,
// because the directory of the icon may tell another size. Returns an empty size if there is no such image.
// Moves the position of `file`.
QSize StoredIconSize(QIODevice& file, int index);

} // namespace Corvadine
