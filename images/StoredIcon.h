#pragma once

#include <QSize>

class QIODevice;

namespace Corvadine {

// Returns the size in pixels of the image `index`, from 0, in a Windows icon
// (https://learn.microsoft.com/en-us/previous-versions/ms997538(v=msdn.10)), as the image itself tells it.
// The directory of an icon may tell another one. Empty for an image that is not there. Moves the position of
// `file`.
QSize StoredIconSize(QIODevice& file, int index);

} // namespace Corvadine
