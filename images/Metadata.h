#pragma once

#include <QByteArray>
#include <QImageIOHandler>

class QIODevice;

namespace Corvadine {

// Returns the content of the first chunk `type` of a PNG (https://www.w3.org/TR/png-3/#5DataRep) or WebP
// (https://developers.google.com/speed/webp/docs/riff_container) file. Returns nothing for all other files,
// and for a chunk that is missing, damaged, or larger than 16 MiB. Moves the position of `file`.
QByteArray ChunkOf(QIODevice& file, QByteArrayView type);

// Returns the ICC profile in the content of a chunk iCCP. Returns nothing if the profile is damaged or larger
// than 16 MiB.
QByteArray ProfileInChunk(const QByteArray& chunk);

// Returns the transformation that makes the stored picture of a PNG or WebP file upright. The EXIF
// orientation tells it (https://www.cipa.jp/std/documents/download_e.html?DC-008-Translation-2023-E). Returns
// TransformationNone for all other files: Qt's decoders apply the orientation of JPEG and TIFF. Moves the
// position of `file`.
QImageIOHandler::Transformations ChunkOrientation(QIODevice& file);

} // namespace Corvadine
