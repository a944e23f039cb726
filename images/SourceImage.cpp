#include "images/SourceImage.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/LargeMemory.h"
#include "images/Bitmap.h"
#include "images/CmykJpeg.h"
#include "images/ColorProfile.h"
#include "images/Gif.h"
#include "images/ImageFormat.h"
#include "images/Metadata.h"
#include "images/PngReader.h"
#include "images/StoredIcon.h"
#include "images/TiffSamples.h"
#include "images/Truncation.h"
#include "images/Xbm.h"

#include <QColorSpace>
#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QPixelFormat>
#include <QTransform>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>

namespace Corvadine {

namespace {

const QString Attempt = u"load the image"_s;

TError BadImage(const QString& path, const QString& reason)
{
    return { TErrorKind::BadInput, Attempt, path, reason };
}

// Qt keeps a file's name with slashes; messages show it as the system writes it.
QString PathOf(const QFile& file)
{
    return QDir::toNativeSeparators(file.fileName());
}

constexpr qint64 MostSide = std::numeric_limits<int>::max();
constexpr qint64 MebibyteBytes = qint64 { 1024 } * 1024;

qint64 RoundedUpQuotient(qint64 dividend, qint64 divisor)
{
    return (dividend + divisor - 1) / divisor;
}

// Refuses an empty file, and a file that is larger than the limit for decoded pixels. A huge file is probably
// no image, but perhaps a video with a wrong name. Some decoders would read the whole file to find the size
// of the picture.
void OpenSource(QFile& file)
{
    OpenForReading(file, Attempt);
    if (file.size() == 0)
        throw BadImage(PathOf(file), u"the file is empty"_s);
    const qint64 mebibytes = RoundedUpQuotient(file.size(), MebibyteBytes);
    if (mebibytes > MaxDecodedMebibytes)
        throw BadImage(PathOf(file),
            u"the file has %1 MiB, and the limit is %2 MiB"_s.arg(mebibytes).arg(MaxDecodedMebibytes));
}

// Makes decoders refuse large pictures. This matters for formats whose header does not tell the size. For all
// other formats Decode() refuses first, with a text that names the size. May be called from several threads.
void LimitAllocations()
{
    static std::once_flag isDone;
    std::call_once(isDone, [] { QImageReader::setAllocationLimit(MaxDecodedMebibytes); });
}

// Whether the picture has more than 8 bits per channel.
bool IsDeep(const QImage& image)
{
    return image.depth() == 64 || image.format() == QImage::Format_Grayscale16;
}

// Decodes a plain PNG file (see TPngReader). Returns a null image for any other file.
QImage ReadPlainPng(QFile& file)
{
    TPngReader reader(file);
    if (!reader.IsPlain())
        return {};
    const auto format = reader.HasAlpha() ? QImage::Format_ARGB32 : QImage::Format_RGB32;
    const auto deepFormat = reader.HasAlpha() ? QImage::Format_RGBA64 : QImage::Format_RGBX64;
    QImage image(reader.Size(), reader.Is16Bit() ? deepFormat : format);
    const TLargeMemory memory(reader.InflatedBytes());
    const auto rowBytes = static_cast<std::size_t>(image.width()) * (reader.Is16Bit() ? 8 : 4);
    const bool isRead =
        !image.isNull() && reader.Read(memory.Bytes(), [&image, rowBytes](int y, const void* pixels) {
            std::memcpy(image.scanLine(y), pixels, rowBytes);
        });
    return isRead ? image : QImage();
}

// Reduces the picture to `size`.
QImage Reduced(QImage image, QSize size)
{
    if (image.size() == size)
        return image;
    // scaled() would force the result back into a palette. It also does not premultiply pictures with 16 bits
    // per channel.
    if (image.hasAlphaChannel())
        image.convertTo(
            IsDeep(image) ? QImage::Format_RGBA64_Premultiplied : QImage::Format_ARGB32_Premultiplied);
    else if (image.colorCount() > 0)
        image.convertTo(QImage::Format_RGB32);
    return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

// Makes all pixels outside of `place` transparent.
void ClearAround(QImage& image, const QRect& place)
{
    if (image.isNull() || place.contains(image.rect()))
        return;
    QImage cleared(image.size(), QImage::Format_ARGB32);
    cleared.fill(Qt::transparent);
    image.convertTo(QImage::Format_ARGB32);
    const QRect kept = cleared.isNull() ? QRect() : place & image.rect();
    for (int y = kept.top(); y <= kept.bottom(); ++y)
        std::memcpy(cleared.scanLine(y) + qsizetype { kept.left() } * 4,
            image.constScanLine(y) + qsizetype { kept.left() } * 4,
            static_cast<std::size_t>(kept.width()) * 4);
    image = std::move(cleared);
}

QImage Turned(QImage image, QImageIOHandler::Transformations turn)
{
    if (turn == QImageIOHandler::TransformationNone)
        return image;
    const QColorSpace space = image.colorSpace();
    image.mirror(turn.testFlag(QImageIOHandler::TransformationMirror),
        turn.testFlag(QImageIOHandler::TransformationFlip));
    if (turn.testFlag(QImageIOHandler::TransformationRotate90))
        image = image.transformed(QTransform().rotate(90));
    image.setColorSpace(space);
    return image;
}

// Which image to take from a file that holds one picture in several sizes.
enum class TWhichImage {
    First,
    Largest,
};

// Decodes one file. A file that is no image is refused after its first bytes, so a long file costs no time.
class TFileDecoder {
public:
    // REQUIRES: `file` was opened by OpenSource() and outlives the decoder.
    explicit TFileDecoder(QFile& file, TWhichImage which = TWhichImage::Largest)
        : FPath(PathOf(file)), FFile(file)
    {
        LimitAllocations();
        FTurn = ChunkOrientation(FFile);
        ChooseDecoder();
        FReader.setAutoTransform(true);
        if (!FReader.canRead()) {
            RefuseTooLarge(HeaderOf(XbmSize(FFile), QImage::Format_Mono)); // Qt refuses large XBM files
            throw NoImage();
        }
        FFormat = FReader.format();
        // The directory of a Windows icon may tell another size than the picture has.
        const bool tellsSize = FReader.supportsOption(QImageIOHandler::Size) && FFormat != "ico";
        FHeader = tellsSize ? ReadHeader() : DecodeForHeader(which);
    }

    const TImageHeader& Header() const { return FHeader; }

    QImage Decode()
    {
        RefuseTooLarge(FHeader);
        if (!FDecoded.isNull())
            return FDecoded;
        RefuseTruncated();
        QImage image = Turned(ReadPicture(), FTurn);
        // The limits and the box of a thumbnail were applied to the size in the header, so another size is
        // refused.
        if (!FReader.scaledSize().isValid() && image.size() != FHeader.Size)
            throw BadImage(FPath,
                u"it is damaged: it has %1 pixels, and its header tells %2"_s.arg(
                    SizeText(image.size()), SizeText(FHeader.Size)));
        return image;
    }

    // Decodes like Decode(), but to `size` (upright). The decoder itself reduces the picture if the result
    // looks as good as after decoding at full size.
    QImage DecodeReduced(QSize size)
    {
        if (ReducesWell())
            FReader.setScaledSize(IsLying() ? size.transposed() : size);
        return Reduced(Decode(), size);
    }

private:
    // Chooses the decoder by the content. Qt alone would ask the decoders of all plugins, and some of these
    // take any amount of memory.
    void ChooseDecoder()
    {
        const QByteArray decoder = DecoderFor(FFile);
        if (decoder.isEmpty())
            throw BadImage(FPath, UnreadFormatReason(FFile));
        FFile.seek(0);
        FReader.setDevice(&FFile);
        FReader.setAutoDetectImageFormat(false);
        FReader.setFormat(decoder);
    }

    TImageHeader ReadHeader()
    {
        const QSize stored = StoredSize();
        if (stored.isEmpty())
            throw NoImage();
        return HeaderOf(IsLying() ? stored.transposed() : stored, FReader.imageFormat());
    }

    // Finds the size by decoding, because some decoders, for example the decoder of icons, cannot tell the
    // size earlier. The file may hold one picture in several sizes. Sizes that the decoder cannot read are
    // skipped.
    TImageHeader DecodeForHeader(TWhichImage which)
    {
        const bool isSeveral = FReader.imageCount() > 1 && !FReader.supportsAnimation();
        const int count = isSeveral ? FReader.imageCount() : 1;
        for (int i = 0; i < count && (which == TWhichImage::Largest || FDecoded.isNull()); ++i) {
            if (isSeveral)
                FReader.jumpToImage(i);
            if (FFormat == "ico")
                RefuseLargeIcon(i);
            const QImage image = FReader.read();
            if (image.width() > FDecoded.width())
                FDecoded = image;
        }
        if (FDecoded.isNull())
            throw Damaged();
        // As in Windows, a PNG in an icon is sRGB unless it has an ICC profile. A color space without a
        // description comes from other chunks.
        if (FDecoded.colorSpace().description().isEmpty())
            FDecoded.setColorSpace({});
        return HeaderOf(FDecoded.size(), FDecoded.format());
    }

    // Refuses an icon's image that is too large. The message tells the size, which Qt's decoder would not
    // tell.
    void RefuseLargeIcon(int index)
    {
        const qint64 place = FFile.pos(); // the decoder continues at this place
        RefuseTooLarge(HeaderOf(StoredIconSize(FFile, index), QImage::Format_ARGB32));
        FFile.seek(place);
    }

    static TImageHeader HeaderOf(QSize size, QImage::Format format)
    {
        const int bytesPerPixel = QImage::toPixelFormat(format).bitsPerPixel() / 8;
        return { size, MebibytesOf(size, std::max(bytesPerPixel, 4)) };
    }

    void RefuseTooLarge(const TImageHeader& header) const
    {
        if (header.DecodedMebibytes > MaxDecodedMebibytes)
            throw BadImage(FPath,
                u"it has %1 pixels, %2 MiB once decoded, and the limit is %3 MiB"_s.arg(SizeText(header.Size))
                    .arg(header.DecodedMebibytes)
                    .arg(MaxDecodedMebibytes));
    }

    TError Damaged() const
    {
        return BadImage(FPath, u"it is damaged or truncated (%1)"_s.arg(FReader.errorString().toLower()));
    }

    TError NoImage() const { return BadImage(FPath, u"it is not an image in a format that can be read"_s); }

    // Returns the size before a rotation. Qt gives a negative height for bitmaps whose top row comes first,
    // and no size for large bitmaps.
    QSize StoredSize()
    {
        if (FFormat != "bmp")
            return FReader.size();
        const qint64 place = FFile.pos(); // the decoder continues at this place
        const auto header = ReadBitmapHeader(FFile);
        FFile.seek(place);
        const auto side = [](qint64 pixels) { return static_cast<int>(std::min(pixels, MostSide)); };
        return header ? QSize(side(header->Width), side(header->Height)) : QSize();
    }

    // Decodes the picture as its format says. Where Qt deviates, decodes without Qt or corrects the result.
    QImage ReadPicture()
    {
        QImage image;
        if (FFormat == "bmp")
            image = ReadMaskedBitmap(FFile);
        else if (FFormat == "jpeg" || FFormat == "jpg")
            image = Turned(ReadCmykJpeg(FFile), FReader.transformation());
        else if (FFormat == "tiff" || FFormat == "tif")
            image = ReadTiffSamples(FFile);
        if (!image.isNull())
            return image;
        FFile.seek(FStart);
        image = ClearedImage();
        if (!FReader.read(&image))
            throw Damaged();
        if (FFormat == "gif")
            ClearAround(image, FirstGifPicture(FFile).Place);
        return image;
    }

    // Returns the image to decode into, or a null image if the decoder makes its own. A run-length encoded
    // bitmap may leave pixels out. In an image that the decoder makes, these pixels would show what the
    // memory held before.
    QImage ClearedImage()
    {
        if (FFormat != "bmp")
            return {};
        QImage image(StoredSize(), FReader.imageFormat());
        image.fill(0);
        return image;
    }

    void RefuseTruncated()
    {
        FStart = FFile.pos();
        if (IsTruncated(FFile))
            throw BadImage(FPath, u"the file is truncated"_s);
    }

    // Whether the stored picture is turned by 90 or 270 degrees.
    bool IsLying() const
    {
        return (FTurn | FReader.transformation()).testFlag(QImageIOHandler::TransformationRotate90);
    }

    // Whether the decoder itself may reduce the picture. Decoders do not premultiply by alpha, so the
    // color of transparent pixels would tint the edges. Decoders also force mixed colors back into the
    // file's palette.
    bool ReducesWell() const
    {
        const QPixelFormat format = QImage::toPixelFormat(FReader.imageFormat());
        return format.alphaUsage() == QPixelFormat::IgnoresAlpha
            && format.colorModel() != QPixelFormat::Indexed;
    }

    QString FPath;
    QFile& FFile;
    TImageHeader FHeader;
    QImageIOHandler::Transformations FTurn; // turns the picture of Qt's decoder upright
    QByteArray FFormat;                     // as Qt names it; FReader tells it only before reading
    qint64 FStart = 0;                      // where the decoder continues to read
    QImageReader FReader;
    QImage FDecoded; // null unless decoding was the only way to find the size
};

// Returns `image`. Throws TError if it is null: Qt's conversions return null when memory runs out.
QImage Whole(QImage image, const QString& path)
{
    if (image.isNull())
        throw BadImage(path, u"there is not enough memory to decode it"_s);
    return image;
}

// Returns the decoded `image` of `file` in sRGB and in one of the formats that LoadSourceImage() returns.
// Throws as Whole() does.
QImage ConvertedSource(QImage image, QFile& file)
{
    const TColorProfile profile = ProfileOf(image, file);
    if (IsDeep(image))
        image.convertTo(image.hasAlphaChannel() ? QImage::Format_RGBA64 : QImage::Format_RGBX64);
    else
        image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    ConvertToSrgb(image, profile);
    return Whole(std::move(image), PathOf(file));
}

// Returns the picture of a thumbnail. `image` comes from ConvertedSource(). Throws as Whole() does.
QImage ThumbnailOf(QImage image, const QString& path)
{
    image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    return Whole(std::move(image), path);
}

} // namespace

TImageHeader ReadImageHeader(const QString& path)
{
    QFile file(path);
    OpenSource(file);
    if (const TPngReader png(file); png.IsPlain())
        return { png.Size(), MebibytesOf(png.Size(), png.Is16Bit() ? 8 : 4) };
    return TFileDecoder(file).Header();
}

QImage LoadSourceImage(const QString& path)
{
    QFile file(path);
    return LoadSourceImage(file);
}

QImage LoadSourceImage(QFile& file)
{
    OpenSource(file);
    if (QImage image = ReadPlainPng(file); !image.isNull())
        return image;
    return ConvertedSource(TFileDecoder(file).Decode(), file);
}

TThumbnail LoadThumbnail(const QString& path, QSize box)
{
    QFile file(path);
    const auto fitted = [box](QSize size) {
        const bool fits = size.width() <= box.width() && size.height() <= box.height();
        return fits ? size : size.scaled(box, Qt::KeepAspectRatio).expandedTo({ 1, 1 });
    };
    OpenSource(file);
    if (const QImage image = ReadPlainPng(file); !image.isNull())
        return { ThumbnailOf(Reduced(image, fitted(image.size())), path), image.size() };
    TFileDecoder decoder(file, TWhichImage::First);
    const QSize size = decoder.Header().Size;
    QImage picture = fitted(size) == size ? decoder.Decode() : decoder.DecodeReduced(fitted(size));
    return { ThumbnailOf(ConvertedSource(std::move(picture), file), path), size };
}

QImage BlankSourceImage()
{
    QImage image(1, 1, QImage::Format_RGB32);
    image.fill(Qt::white);
    return image;
}

qint64 MebibytesOf(QSize size, int bytesPerPixel)
{
    return RoundedUpQuotient(qint64 { size.width() } * size.height(), MebibyteBytes / bytesPerPixel);
}

QString SizeText(QSize size)
{
    return u"%1 x %2"_s.arg(size.width()).arg(size.height());
}

} // namespace Corvadine
