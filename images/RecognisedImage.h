#pragma once

#include <QString>

namespace Corvadine {

// Whether `path` counts as an image wherever one is chosen, dropped or listed: it is no folder, and its
// extension, in any mix of capitals, belongs to a format that can be read. Videos never count, whatever
// decoders the system brings. The content is not looked at, and the file need not exist.
bool IsRecognisedImageFile(const QString& path);

} // namespace Corvadine
