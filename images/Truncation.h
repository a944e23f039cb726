#pragma once

class QIODevice;

namespace Corvadine {

// Whether an image file ends before its first picture does, for the formats whose decoders fill the rest with
// grey or black and report success: JPEG, GIF and uncompressed BMP. False for all other formats and for files
// that are damaged in other ways; their decoders say so themselves. Reads no further than it has to, and
// leaves `file` at any place. REQUIRES: `file` is open and can seek.
bool IsTruncated(QIODevice& file);

} // namespace Corvadine
