#include "images/Truncation.h"

#include <QtEndian>

#include <cstdlib>

namespace Corvadine {

namespace {

// Walks the segments of a JPEG (ITU-T T.81, https://www.w3.org/Graphics/JPEG/itu-t81.pdf, B.1.1) up to the
// end of its picture. The preview inside and whatever phones hang on behind, a film for one, have markers
// too, so looking for the last ones would not do.
class TJpegWalker {
public:
    explicit TJpegWalker(const QByteArray& file) : FFile(file) { }

    bool EndsEarly()
    {
        constexpr int StartOfScan = 0xDA;
        constexpr int EndOfImage = 0xD9;
        constexpr qsizetype StartOfImageBytes = 2;
        FAt = StartOfImageBytes;
        while (FAt + 1 < FFile.size()) {
            const int marker = Byte(FAt + 1);
            if (Byte(FAt) != 0xFF)
                return false; // damaged, not short
            if (marker == EndOfImage)
                return false;
            if (marker == 0xFF) { // fill byte
                ++FAt;
                continue;
            }
            FAt += 2 + (Byte(FAt + 2) << 8 | Byte(FAt + 3));
            if (marker == StartOfScan)
                SkipEntropyCodedData();
        }
        return true;
    }

private:
    int Byte(qsizetype at) const { return at < FFile.size() ? static_cast<uchar>(FFile[at]) : 0; }

    // To the next marker; a byte 0xFF of the data is followed by a zero, and restart markers belong to it.
    void SkipEntropyCodedData()
    {
        for (FAt = FFile.indexOf('\xFF', FAt); FAt >= 0; FAt = FFile.indexOf('\xFF', FAt + 2)) {
            const int next = Byte(FAt + 1);
            if (next != 0 && (next & 0xF8) != 0xD0)
                return;
        }
        FAt = FFile.size();
    }

    const QByteArray& FFile;
    qsizetype FAt = 0;
};

// Walks the blocks of a GIF (https://www.w3.org/Graphics/GIF/spec-gif89a.txt) up to the end of its first
// picture.
class TGifWalker {
public:
    explicit TGifWalker(const QByteArray& file) : FFile(file) { }

    bool EndsEarly()
    {
        constexpr qsizetype HeaderBytes = 13;
        constexpr qsizetype ImageDescriptorBytes = 10;
        FAt = HeaderBytes + ColorTableBytes(Byte(HeaderBytes - 3));
        while (FAt < FFile.size()) {
            const int introducer = Byte(FAt);
            if (introducer == ',') {
                FAt += ImageDescriptorBytes + ColorTableBytes(Byte(FAt + ImageDescriptorBytes - 1));
                ++FAt; // LZW minimum code size
                return !SkipSubBlocks();
            }
            if (introducer != '!')
                return false; // damaged, not short
            FAt += 2;         // introducer and label
            if (!SkipSubBlocks())
                return true;
        }
        return true;
    }

private:
    int Byte(qsizetype at) const { return at < FFile.size() ? static_cast<uchar>(FFile[at]) : 0; }

    static qsizetype ColorTableBytes(int flags)
    {
        return flags & 0x80 ? qsizetype { 3 } << ((flags & 7) + 1) : 0;
    }

    // False if the file ends before the terminating block of size 0.
    bool SkipSubBlocks()
    {
        while (FAt < FFile.size()) {
            const int size = Byte(FAt);
            FAt += 1 + size;
            if (size == 0)
                return true;
        }
        return false;
    }

    const QByteArray& FFile;
    qsizetype FAt = 0;
};

// Needs all rows; a compressed bitmap has no size that could be foretold
// (https://learn.microsoft.com/en-us/windows/win32/gdi/bitmap-storage).
bool IsTruncatedBmp(const QByteArray& file)
{
    constexpr qsizetype FileAndInfoHeaderBytes = 14 + 40;
    if (file.size() < FileAndInfoHeaderBytes)
        return true;
    const auto field = [&file](qsizetype at) { return qFromLittleEndian<qint32>(file.constData() + at); };
    const auto pixelsAt = static_cast<quint32>(field(10)); // bfOffBits
    const qint64 width = field(18);                        // biWidth
    const qint64 height = std::abs(qint64 { field(22) });  // biHeight, negative when the top row comes first
    const qint64 bits = qFromLittleEndian<quint16>(file.constData() + 28); // biBitCount
    const int compression = field(30);                                     // biCompression
    const bool isPlain = compression == 0 || compression == 3;             // BI_RGB, BI_BITFIELDS
    return isPlain && file.size() < pixelsAt + (width * bits + 31) / 32 * 4 * height;
}

} // namespace

bool IsTruncated(const QByteArray& file)
{
    if (file.startsWith("\xFF\xD8"))
        return TJpegWalker(file).EndsEarly();
    if (file.startsWith("GIF8"))
        return TGifWalker(file).EndsEarly();
    return file.startsWith("BM") && IsTruncatedBmp(file);
}

} // namespace Corvadine
