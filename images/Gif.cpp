#include "images/Gif.h"

#include "images/FileBytes.h"

namespace Corvadine {

namespace {

// Walks the blocks of a GIF (https://www.w3.org/Graphics/GIF/spec-gif89a.txt) up to the end of its
// first picture.
class TGifWalker {
public:
    explicit TGifWalker(QIODevice& file) : FFile(file) { }

    TGifPicture FirstPicture()
    {
        constexpr qint64 HeaderBytes = 13;
        constexpr qint64 ImageDescriptorBytes = 10;
        FAt = HeaderBytes + ColorTableBytes(FFile.At(HeaderBytes - 3));
        while (FAt < FFile.Size()) {
            const int introducer = FFile.At(FAt);
            if (introducer == ',') {
                const QRect place(
                    FFile.Word(FAt + 1), FFile.Word(FAt + 3), FFile.Word(FAt + 5), FFile.Word(FAt + 7));
                FAt += ImageDescriptorBytes + ColorTableBytes(FFile.At(FAt + ImageDescriptorBytes - 1));
                ++FAt; // LZW minimum code size
                return { place, !SkipSubBlocks() };
            }
            if (introducer != '!')
                return { {}, false }; // damaged, but not cut off
            FAt += 2;                 // introducer and label
            if (!SkipSubBlocks())
                break;
        }
        return {};
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

} // namespace

TGifPicture FirstGifPicture(QIODevice& file)
{
    return TGifWalker(file).FirstPicture();
}

} // namespace Corvadine
