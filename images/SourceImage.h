#pragma once

#include <QImage>
#include <QSize>
#include <QString>

class QFile;

namespace Corvadine {

// The facts that the header of an image file tells. If the header does not tell the size, as in Windows
// icons, the file is decoded to find the size.
struct TImageHeader {
    QSize Size;                  // pixels, upright (EXIF orientation applied)
    qint64 DecodedMebibytes = 0; // memory that the decoded pixels take, rounded up
};

// A picture is refused if its decoded pixels take more memory than this. A picture of 16384 x 8192 pixels
// with 32 bits just fits.
constexpr qint64 MaxDecodedMebibytes = 512;

// Returns the memory in MiB, rounded up, that a picture takes. Correct even if the number of bytes does not
// fit into 64 bits. REQUIRES: bytesPerPixel is a power of two.
qint64 MebibytesOf(QSize size, int bytesPerPixel);

// Reads the header of `path`. Throws as LoadSourceImage() does, but only for faults that the header shows. A
// picture that takes more than MaxDecodedMebibytes is not refused if its header tells the size.
TImageHeader ReadImageHeader(const QString& path);

// Decodes `path` into an upright sRGB picture. The format is Format_ARGB32 (straight alpha) if the file has
// an alpha channel or transparent palette entries, otherwise Format_RGB32. A file with more than 8 bits per
// channel gives Format_RGBA64 (straight alpha) or Format_RGBX64. The EXIF orientation is applied. An embedded
// color profile is converted to sRGB with the full precision of the file. Throws TError(Io) for a file that
// is missing, unreadable or a folder. Throws TError(BadInput) for a file that is empty, truncated or in no
// format that is read (images/ImageFormat.h), and for a picture or file of more than MaxDecodedMebibytes. The
// content alone decides on the format, so a wrong extension does no harm.
QImage LoadSourceImage(const QString& path);

// Decodes the file that `file` names, as the function above does. Leaves `file` open at any position.
QImage LoadSourceImage(QFile& file);

// A small picture of an image file, for lists.
struct TThumbnail {
    QImage Picture; // premultiplied sRGB; fits into the box with its aspect ratio kept; never enlarged
    QSize Size;     // pixels; the size of the picture in the file, upright
};

// Loads the first picture of `path`, reduced to fit into `box`. If the format allows it, the picture is not
// decoded at full size. Throws as LoadSourceImage() does.
TThumbnail LoadThumbnail(const QString& path, QSize box);

// Returns one opaque white pixel, which stands for a source that is not chosen. The pixel is white even on a
// dark desktop, because the outputs must not depend on the theme.
QImage BlankSourceImage();

// Returns a size in pixels as all messages write it, for example "1024 x 512".
QString SizeText(QSize size);

} // namespace Corvadine
