#include "images/SourceImage.h"

#include "base/Error.h"
#include "base/Files.h"
#include "images/Truncation.h"

#include <QColorSpace>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPixelFormat>

#include <cmath>
#include <mutex>

namespace Corvadine {

namespace {

const QString Attempt = QStringLiteral("load the image");

TError BadImage(const QString& path, const QString& reason)
{
    return { TErrorKind::BadInput, Attempt, path, reason };
}

constexpr qint64 MebibyteBytes = qint64 { 1024 } * 1024;

qint64 RoundedUpQuotient(qint64 dividend, qint64 divisor)
{
    return (dividend + divisor - 1) / divisor;
}

// A file beyond the limit of its decoded pixels is somebody's disk image or film under a wrong name. Some
// decoders would read all of it only to tell its size.
void RefuseHugeFile(const QFile& file)
{
    const qint64 mebibytes = RoundedUpQuotient(file.size(), MebibyteBytes);
    if (mebibytes > MaxDecodedMebibytes)
        throw BadImage(file.fileName(),
            QStringLiteral("the file has %1 MiB, and the limit is %2 MiB")
                .arg(mebibytes)
                .arg(MaxDecodedMebibytes));
}

// Those who know a picture's size before it is decoded refuse a large one with a text that names it; this is
// for the others. Decoders run on several threads.
void LimitAllocations()
{
    static std::once_flag isDone;
    std::call_once(isDone, [] { QImageReader::setAllocationLimit(MaxDecodedMebibytes); });
}

// Which image of a file that holds several sizes of one picture.
enum class TWhichImage {
    First,
    Largest,
};

// A reader of one file. What is no image is refused by its first bytes, however long it is.
class TFileDecoder {
public:
    TFileDecoder(const QString& path, TDecoderChoice choice, TWhichImage which = TWhichImage::Largest)
        : FPath(path), FFile(path), FChoice(choice)
    {
        OpenForReading(FFile, Attempt);
        if (FFile.size() == 0)
            throw BadImage(path, QStringLiteral("the file is empty"));
        RefuseHugeFile(FFile);
        LimitAllocations();
        FReader.setDevice(&FFile);
        FReader.setAutoTransform(true);
        ChooseDecoder();
        if (!FReader.canRead()) // asked first: the icon decoder loses its place over the size
            throw NoImage();
        if (which == TWhichImage::Largest && FReader.format() == "ico")
            ChooseLargestImage();
        const bool tellsSize = FReader.supportsOption(QImageIOHandler::Size);
        FHeader = tellsSize ? ReadHeader() : DecodeForHeader(which);
    }

    const TImageHeader& Header() const { return FHeader; }

    QImage Decode()
    {
        if (FHeader.DecodedMebibytes > MaxDecodedMebibytes)
            throw BadImage(FPath,
                QStringLiteral("it has %1 pixels, %2 MiB once decoded, and the limit is %3 MiB")
                    .arg(SizeText(FHeader.Size))
                    .arg(FHeader.DecodedMebibytes)
                    .arg(MaxDecodedMebibytes));
        if (!FDecoded.isNull())
            return FDecoded;
        RefuseTruncated();
        QImage image;
        if (!FReader.read(&image))
            throw Damaged();
        return image;
    }

    // As Decode(), reduced to `size` (upright).
    QImage DecodeReduced(QSize size)
    {
        if (ReducesWell())
            FReader.setScaledSize(IsLying() ? size.transposed() : size);
        QImage image = Decode();
        if (image.size() == size)
            return image;
        if (image.colorCount() > 0) // scaled() would dither back into the palette
            image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
        return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }

private:
    void ChooseDecoder()
    {
        FReader.setAutoDetectImageFormat(true);
        FReader.setDecideFormatFromContent(true);
        if (FChoice == TDecoderChoice::ByContent)
            return;
        const QByteArray extension = QFileInfo(FPath).suffix().toLower().toLatin1();
        QImageReader byExtension(&FFile, extension);
        const bool fits = !extension.isEmpty() && byExtension.canRead();
        FFile.seek(0);
        if (!fits)
            return;
        FReader.setDecideFormatFromContent(false); // which would overrule the format
        FReader.setFormat(extension);
    }

    // A Windows icon starts with its smallest image, which is no use as a source.
    void ChooseLargestImage()
    {
        int largest = 0;
        int most = 0;
        for (int i = 0; i < FReader.imageCount(); ++i) {
            FReader.jumpToImage(i);
            if (FReader.size().width() > most) {
                most = FReader.size().width();
                largest = i;
            }
        }
        FReader.jumpToImage(largest);
    }

    TImageHeader ReadHeader()
    {
        const QSize stored = FReader.size();
        if (stored.isEmpty())
            throw NoImage();
        return HeaderOf(IsLying() ? stored.transposed() : stored, FReader.imageFormat());
    }

    // For formats whose decoders tell no size before they decode, such as Apple's icons. These too hold
    // several sizes of one picture, of which some may be in a format that the decoder lacks.
    TImageHeader DecodeForHeader(TWhichImage which)
    {
        const bool isSeveral = FReader.imageCount() > 1 && !FReader.supportsAnimation();
        const int count = isSeveral ? FReader.imageCount() : 1;
        for (int i = 0; i < count && (which == TWhichImage::Largest || FDecoded.isNull()); ++i) {
            if (isSeveral)
                FReader.jumpToImage(i);
            const QImage image = FReader.read();
            if (image.width() > FDecoded.width())
                FDecoded = image;
        }
        if (FDecoded.isNull())
            throw Damaged();
        return HeaderOf(FDecoded.size(), FDecoded.format());
    }

    static TImageHeader HeaderOf(QSize size, QImage::Format format)
    {
        const int bytesPerPixel = QImage::toPixelFormat(format).bitsPerPixel() / 8;
        return { size, MebibytesOf(size, std::max(bytesPerPixel, 4)) };
    }

    TError Damaged() const
    {
        return BadImage(
            FPath, QStringLiteral("it is damaged or truncated (%1)").arg(FReader.errorString().toLower()));
    }

    TError NoImage() const
    {
        return BadImage(FPath, QStringLiteral("it is not an image in a format that can be read"));
    }

    void RefuseTruncated()
    {
        const qint64 place = FFile.pos(); // the decoder's
        if (IsTruncated(FFile))
            throw BadImage(FPath, QStringLiteral("the file is truncated"));
        FFile.seek(place);
    }

    // Whether the stored picture is turned by a quarter.
    bool IsLying() const
    {
        return FReader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
    }

    // Whether the decoder may be asked for a smaller picture. Those that reduce while they read know nothing
    // of premultiplied alpha, so that the colour of transparent pixels tints the edges, and force the mixed
    // colours back into the file's palette.
    bool ReducesWell() const
    {
        const QPixelFormat format = QImage::toPixelFormat(FReader.imageFormat());
        return format.alphaUsage() == QPixelFormat::IgnoresAlpha
            && format.colorModel() != QPixelFormat::Indexed;
    }

    QString FPath;
    QFile FFile;
    TDecoderChoice FChoice;
    TImageHeader FHeader;
    QImageReader FReader;
    QImage FDecoded; // if its size had to be found out by decoding
};

// Whether its red, green and blue are sRGB's, apart from the rounding of a file that spells them out.
bool HasSrgbPrimaries(const QColorSpace& space)
{
    const QColorTransform transform =
        space.transformationToColorSpace(QColorSpace(QColorSpace::Primaries::SRgb, space.gamma()));
    const auto stays = [&transform](QRgb color) {
        const QRgb mapped = transform.map(color);
        return std::abs(qRed(mapped) - qRed(color)) <= 2 && std::abs(qGreen(mapped) - qGreen(color)) <= 2
            && std::abs(qBlue(mapped) - qBlue(color)) <= 2;
    };
    return stays(qRgb(200, 60, 60)) && stays(qRgb(60, 200, 60)) && stays(qRgb(60, 60, 200));
}

// A PNG with just a gamma of about 1/2.2, alone or with sRGB's primaries as many programs write them, means
// "as on any screen", not a profile to convert from.
bool IsScreenGamma(const QColorSpace& space)
{
    constexpr float ScreenGamma = 2.2F;
    return space.transferFunction() == QColorSpace::TransferFunction::Gamma
        && std::abs(space.gamma() - ScreenGamma) < 0.05F && HasSrgbPrimaries(space);
}

void ConvertToSrgb(QImage& image)
{
    const QColorSpace space = image.colorSpace();
    const QColorSpace srgb(QColorSpace::SRgb);
    if (space.isValid() && space != srgb && !IsScreenGamma(space)) {
        if (image.format() == QImage::Format_Indexed8) // palettes are not converted in place
            image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
        image.convertToColorSpace(srgb);
    }
    image.setColorSpace({});
}

// What Qt's conversions leave behind when they get no memory.
void RefuseNull(const QImage& image, const QString& path)
{
    if (image.isNull())
        throw BadImage(path, QStringLiteral("there is not enough memory to decode it"));
}

} // namespace

TImageHeader ReadImageHeader(const QString& path, TDecoderChoice choice)
{
    return TFileDecoder(path, choice).Header();
}

QImage LoadSourceImage(const QString& path, TDecoderChoice choice)
{
    QImage image = TFileDecoder(path, choice).Decode();
    ConvertToSrgb(image);
    image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    RefuseNull(image, path);
    return image;
}

TThumbnail LoadThumbnail(const QString& path, QSize box)
{
    TFileDecoder decoder(path, TDecoderChoice::ByExtension, TWhichImage::First);
    const QSize size = decoder.Header().Size;
    const bool fits = size.width() <= box.width() && size.height() <= box.height();
    const QSize reduced = size.scaled(box, Qt::KeepAspectRatio).expandedTo({ 1, 1 });
    QImage picture = fits ? decoder.Decode() : decoder.DecodeReduced(reduced);
    ConvertToSrgb(picture);
    picture.convertTo(picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    RefuseNull(picture, path);
    return { picture, size };
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
    return QStringLiteral("%1 x %2").arg(size.width()).arg(size.height());
}

} // namespace Corvadine
