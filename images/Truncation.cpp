#include "images/Truncation.h"

#include "images/Bitmap.h"
#include "images/FileBytes.h"
#include "images/Gif.h"
#include "images/Xbm.h"

#include <QByteArray>

namespace Corvadine {

namespace {

// Walks the segments of a JPEG (ITU-T T.81, https://www.w3.org/Graphics/JPEG/itu-t81.pdf, B.1.1) up to the
// end of its picture. A search for the last end marker would not do, because previews inside the picture have
// end markers, too. So may data that phones append, for example a short video.
class TJpegWalker {
public:
    explicit TJpegWalker(QIODevice& file) : FFile(file) { }

    bool EndsEarly()
    {
        constexpr int StartOfScan = 0xDA;
        constexpr int EndOfImage = 0xD9;
        constexpr qint64 StartOfImageBytes = 2;
        FAt = StartOfImageBytes;
        while (FAt + 1 < FFile.Size()) {
            const int marker = FFile.At(FAt + 1);
            if (FFile.At(FAt) != 0xFF)
                return false; // damaged, but not cut off
            if (marker == EndOfImage)
                return false;
            if (marker == 0xFF) { // fill byte
                ++FAt;
                continue;
            }
            FAt += 2 + (FFile.At(FAt + 2) << 8 | FFile.At(FAt + 3));
            if (marker == StartOfScan)
                SkipEntropyCodedData();
        }
        return true;
    }

private:
    // Moves to the marker that ends the data. Inside the data, 0xFF is followed by 0 or begins a
    // restart marker.
    void SkipEntropyCodedData()
    {
        constexpr char MarkerStart = '\xFF';
        for (FAt = FFile.Find(MarkerStart, FAt); FAt < FFile.Size(); FAt = FFile.Find(MarkerStart, FAt + 2)) {
            const int next = FFile.At(FAt + 1);
            if (next != 0 && (next & 0xF8) != 0xD0)
                return;
        }
    }

    TFileBytes FFile;
    qint64 FAt = 0;
};

// Walks the codes of a run-length encoded bitmap
// (https://learn.microsoft.com/en-us/windows/win32/gdi/bitmap-compression) up to its last pixel. Codes may
// skip pixels, and a code may end the bitmap early.
class TRunLengthWalker {
public:
    TRunLengthWalker(QIODevice& file, qint64 at) : FFile(file), FAt(at) { }

    bool EndsEarly(qint64 width, qint64 height, qint64 bits)
    {
        constexpr int EndOfLine = 0;
        constexpr int EndOfBitmap = 1;
        constexpr int Delta = 2;
        qint64 x = 0;
        qint64 y = 0;
        while (y < height && (y < height - 1 || x < width)) {
            const int count = Next();
            const int code = Next();
            if (count > 0) {
                x += count;
            } else if (code == EndOfLine) {
                x = 0;
                ++y;
            } else if (code == EndOfBitmap) {
                break;
            } else if (code == Delta) {
                x += Next();
                y += Next();
            } else { // `code` pixels follow, padded to 16 bits
                x += code;
                FAt += (code * bits + 15) / 16 * 2;
            }
            if (FAt > FFile.Size())
                return true;
        }
        return false;
    }

private:
    int Next() { return FFile.At(FAt++); }

    TFileBytes FFile;
    qint64 FAt;
};

// Whether a bitmap ends before its last row or code.
bool IsTruncatedBmp(QIODevice& file)
{
    const auto header = ReadBitmapHeader(file);
    if (!header)
        return false;
    if (header->Compression == BiRle8 || header->Compression == BiRle4)
        return TRunLengthWalker(file, header->PixelsAt)
            .EndsEarly(header->Width, header->Height, header->Bits);
    const bool isPlain = header->Compression == BiRgb || header->Compression == BiBitfields;
    return isPlain && file.size() < header->PixelsAt + header->RowBytes() * header->Height;
}

} // namespace

bool IsTruncated(QIODevice& file)
{
    constexpr qint64 SignatureBytes = 4;
    file.seek(0);
    const QByteArray signature = file.read(SignatureBytes);
    if (signature.startsWith("\xFF\xD8"))
        return TJpegWalker(file).EndsEarly();
    if (signature.startsWith("GIF8"))
        return FirstGifPicture(file).EndsEarly;
    if (signature.startsWith("BM"))
        return IsTruncatedBmp(file);
    if (!signature.startsWith('#') && !signature.startsWith("/*"))
        return false;
    const QSize xbm = XbmSize(file);
    return !xbm.isEmpty() && EndsXbmEarly(file, xbm);
}

} // namespace Corvadine
