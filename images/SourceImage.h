#pragma once

#include <QImage>
#include <QSize>
#include <QString>

namespace Corvadine {

enum class TDecoderChoice {
    ByExtension, // the file name's extension first, the content if that decoder refuses
    ByContent,   // the content alone
};

// What the header of an image file tells. Formats that do not tell it there, such as Apple's icons, are
// decoded to find it out.
struct TImageHeader {
    QSize Size;                  // pixels, upright (EXIF orientation applied)
    qint64 DecodedMebibytes = 0; // memory the decoded pixels take, rounded up
};

// A decoded picture that takes more MiB is refused: the most are 16384 x 8192 pixels of 32 bits.
constexpr qint64 MaxDecodedMebibytes = 512;

// Memory in MiB, rounded up, that a picture of any size takes; 64 bits could not count the bytes of the
// largest. REQUIRES: bytesPerPixel is a power of two.
qint64 MebibytesOf(QSize size, int bytesPerPixel);

// Reads the header of `path`. Throws as LoadSourceImage does, as far as the header shows the fault.
TImageHeader ReadImageHeader(const QString& path, TDecoderChoice choice);

// Decodes `path` into an upright sRGB picture: Format_ARGB32 (straight alpha) when the file has an alpha
// channel or transparent palette entries, Format_RGB32 otherwise; 8 bits per channel. The EXIF orientation is
// applied, and an embedded ICC profile is converted to sRGB with the full precision of the file.
// Throws TError: NotFound, Io (a folder, unreadable), BadInput (empty, truncated, not an image, or a picture
// or file of more than MaxDecodedMebibytes).
QImage LoadSourceImage(const QString& path, TDecoderChoice choice);

// A small picture of an image file, for lists.
struct TThumbnail {
    QImage Picture; // premultiplied sRGB; as large as fits the box with its aspect kept, never enlarged
    QSize Size;     // pixels of the file's own picture, upright
};

// The first picture of `path`, reduced to fit `box`, without decoding it at full size where the format allows
// that. Refuses what LoadSourceImage refuses, with the same errors.
TThumbnail LoadThumbnail(const QString& path, QSize box);

// What stands in for a source that has not been chosen: one opaque pixel, white on a dark desktop too, since
// what is generated must not depend on the colours of somebody's windows.
QImage BlankSourceImage();

// "1024 x 512", as all messages write a size in pixels.
QString SizeText(QSize size);

} // namespace Corvadine
