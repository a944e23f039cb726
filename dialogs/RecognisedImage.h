#pragma once

#include <QString>

namespace Corvadine {

// Whether the window takes `path` for an image: not a folder, and its extension, in any mix of capitals,
// belongs to a format that can be read. Videos never count, whatever decoders the system brings. The content
// is not looked at, and the file need not exist.
bool IsRecognisedImageFile(const QString& path);

} // namespace Corvadine
