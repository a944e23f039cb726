#pragma once

#include <QByteArray>
#include <QString>

class QFile;

// Tells the format of an image file by its content. The formats that are read are PNG, JPEG, WebP, TIFF, GIF,
// BMP, ICO, PNM (PBM, PGM, PPM) and XBM on every system, whatever plugins Qt finds there.
namespace Corvadine {

// Returns the name of Qt's decoder for the content of `file`, for example "jpeg". Returns nothing if the
// format is not read. Only the signature is checked, so the decoder may still refuse the file. Leaves `file`
// at any position. REQUIRES: `file` is open and can seek.
QByteArray DecoderFor(QFile& file);

// Returns why `file` is not read. If the format is known, the text also tells the user what to do. Leaves
// `file` at any position. REQUIRES: `file` is open and can seek, and DecoderFor() returned nothing.
QString UnreadFormatReason(QFile& file);

} // namespace Corvadine
