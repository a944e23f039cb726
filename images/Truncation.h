#pragma once

class QIODevice;

namespace Corvadine {

// Whether an image file ends before the end of its first picture. Checks JPEG, GIF, BMP and XBM, because
// their decoders fill the missing part with gray or black and report success. Returns false for all other
// formats and for other damage, because there the decoders report the error. Reads only as far as needed, and
// leaves `file` at any position. REQUIRES: `file` is open and can seek.
bool IsTruncated(QIODevice& file);

} // namespace Corvadine
