#include "images/Truncation.h"

#include <QIODevice>
#include <QtEndian>

#include <array>
#include <cstdlib>

namespace Corvadine {

namespace {

// The bytes of a file. Only one piece of the file is in memory, because the file may be far larger than
// the picture.
class TFileBytes {
public:
    explicit TFileBytes(QIODevice& file) : FFile(file), FSize(file.size()) { }

    qint64 Size() const { return FSize; }

    // Returns the byte at `at`, or 0 past the end of the file.
    int At(qint64 at)
    {
        if (at < FPieceAt || at >= FPieceAt + FPiece.size())
            Fetch(at);
        return at < FPieceAt + FPiece.size() ? static_cast<uchar>(FPiece[at - FPieceAt]) : 0;
    }

    // Returns the position of the first `byte` at or after `at`, or the size of the file if there is none.
    qint64 Find(char byte, qint64 at)
    {
        for (; at < FSize; at = FPieceAt + FPiece.size()) {
            At(at);
            if (FPiece.isEmpty()) // a read error
                break;
            const qsizetype found = FPiece.indexOf(byte, at - FPieceAt);
            if (found >= 0)
                return FPieceAt + found;
        }
        return FSize;
    }

private:
    void Fetch(qint64 at)
    {
        constexpr qint64 PieceBytes = qint64 { 64 } * 1024;
        FPiece = at < FSize && FFile.seek(at) ? FFile.read(PieceBytes) : QByteArray();
        FPieceAt = at;
    }

    QIODevice& FFile;
    qint64 FSize;
    qint64 FPieceAt = 0;
    QByteArray FPiece;
};

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

// Walks the blocks of a GIF (https://www.w3.org/Graphics/GIF/spec-gif89a.txt) up to the end of its
// first picture.
class TGifWalker {
public:
    explicit TGifWalker(QIODevice& file) : FFile(file) { }

    bool EndsEarly()
    {
        constexpr qint64 HeaderBytes = 13;
        constexpr qint64 ImageDescriptorBytes = 10;
        FAt = HeaderBytes + ColorTableBytes(FFile.At(HeaderBytes - 3));
        while (FAt < FFile.Size()) {
            const int introducer = FFile.At(FAt);
            if (introducer == ',') {
                FAt += ImageDescriptorBytes + ColorTableBytes(FFile.At(FAt + ImageDescriptorBytes - 1));
                ++FAt; // LZW minimum code size
                return !SkipSubBlocks();
            }
            if (introducer != '!')
                return false; // damaged, but not cut off
            FAt += 2;         // introducer and label
            if (!SkipSubBlocks())
                return true;
        }
        return true;
    }

private:
    static qint64 ColorTableBytes(int flags) { return flags & 0x80 ? qint64 { 3 } << ((flags & 7) + 1) : 0; }

    // Moves behind the sub-blocks. Returns false if the file ends before the terminating block of size 0.
    bool SkipSubBlocks()
    {
        while (FAt < FFile.Size()) {
            const int size = FFile.At(FAt);
            FAt += 1 + size;
            if (size == 0)
                return true;
        }
        return false;
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
            } else { // so many pixels, padded to 16 bits
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

// Whether a bitmap lacks rows (https://learn.microsoft.com/en-us/windows/win32/gdi/bitmap-storage).
bool IsTruncatedBmp(QIODevice& file)
{
    constexpr quint32 CoreHeaderBytes = 12; // the header of OS/2 bitmaps, which has smaller fields
    constexpr quint32 InfoHeaderBytes = 40; // newer headers begin with the same fields and are longer
    std::array<char, 14 + InfoHeaderBytes> header {};
    file.seek(0);
    file.read(header.data(), header.size());
    const auto word = [&](std::size_t at) { return qint64 { qFromLittleEndian<quint16>(&header[at]) }; };
    const auto number = [&](std::size_t at) { return qint64 { qFromLittleEndian<qint32>(&header[at]) }; };

    const auto headerBytes = qFromLittleEndian<quint32>(&header[14]); // bcSize, biSize
    const bool isCore = headerBytes == CoreHeaderBytes;
    if (!isCore && headerBytes < InfoHeaderBytes)
        return false;
    const auto pixelsAt = qFromLittleEndian<quint32>(&header[10]); // bfOffBits
    const qint64 width = isCore ? word(18) : number(18);           // bcWidth, biWidth
    // bcHeight; biHeight is negative when the top row comes first
    const qint64 height = isCore ? word(20) : std::abs(number(22));
    const qint64 bits = word(isCore ? 24 : 28);                // bcBitCount, biBitCount
    const qint64 compression = isCore ? 0 : number(30);        // biCompression
    const bool isPlain = compression == 0 || compression == 3; // BI_RGB, BI_BITFIELDS
    if (compression == 1 || compression == 2)                  // BI_RLE8, BI_RLE4
        return TRunLengthWalker(file, pixelsAt).EndsEarly(width, height, bits);
    return isPlain && file.size() < pixelsAt + (width * bits + 31) / 32 * 4 * height;
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
        return TGifWalker(file).EndsEarly();
    return signature.startsWith("BM") && IsTruncatedBmp(file);
}

} // namespace Corvadine
