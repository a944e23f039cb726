#pragma once

#include <QString>

namespace Corvadine {

// Whether a file of this name counts as an image wherever the user chooses, drops or lists images. The
// extension, in upper or lower case, must belong to a format that can be read (images/ImageFormat.h). Does
// not look at the disk.
bool IsRecognisedImageName(const QString& path);

// Whether a file of this name is an image in a known format that cannot be read. A view takes such a file
// from a drop, so that the user learns why it cannot be used. Does not look at the disk.
bool IsUnreadImageName(const QString& path);

// Whether IsRecognisedImageName() accepts `path`, and `path` is no folder. The file need not exist.
bool IsRecognisedImageFile(const QString& path);

} // namespace Corvadine
