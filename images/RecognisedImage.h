#pragma once

#include <QString>

namespace Corvadine {

// Whether a file of this name counts as an image wherever one is chosen, dropped or listed: its extension, in
// any mix of capitals, belongs to a format that can be read. Videos never count, whatever decoders the system
// brings. The disk is not looked at.
bool IsRecognisedImageName(const QString& path);

// Whether its name says so and `path` is no folder; it need not exist.
bool IsRecognisedImageFile(const QString& path);

} // namespace Corvadine
