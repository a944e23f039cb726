#include "images/SourceImage.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/PathRules.h"
#include "images/Truncation.h"

#include <QBuffer>
#include <QColorSpace>
#include <QFileInfo>
#include <QImageReader>
#include <QPixelFormat>

#include <cmath>

namespace Corvadine {

namespace {

const QString Attempt = QStringLiteral("load the image");

TError BadImage(const QString& path, const QString& reason)
{
    return { TErrorKind::BadInput, Attempt, path, reason };
}

qint64 MebibytesUp(qint64 bytes)
{
    return (bytes + (1 << 20) - 1) >> 20;
}

// A file beyond the limit of its decoded pixels is somebody's disk image or film under a wrong name. It is
// refused before it is read, which alone would take seconds and all memory.
QByteArray ReadImageFile(const QString& path)
{
    const qint64 size = QFileInfo(path).size();
    if (size > MaxDecodedBytes)
        throw BadImage(path,
            QStringLiteral("the file has %1 MiB, and the limit is %2 MiB")
                .arg(MebibytesUp(size))
                .arg(MebibytesUp(MaxDecodedBytes)));
    return ReadFile(path, Attempt);
}

// A reader over the bytes of one file. The bytes must outlive it.
class TFileDecoder {
public:
    TFileDecoder(const QString& path, TDecoderChoice choice)
        : FPath(path), FBytes(ReadImageFile(path)), FChoice(choice)
    {
        if (FBytes.isEmpty())
            throw BadImage(path, QStringLiteral("the file is empty"));
        FBuffer.setBuffer(&FBytes);
        FBuffer.open(QIODevice::ReadOnly);
        FReader.setDevice(&FBuffer);
        FReader.setAutoTransform(true);
        ChooseDecoder();
        FHeader = ReadHeader();
    }

    const TImageHeader& Header() const { return FHeader; }

    QImage Decode()
    {
        if (FHeader.DecodedBytes > MaxDecodedBytes)
            throw BadImage(FPath,
                QStringLiteral("it has %1 pixels, %2 MiB once decoded, and the limit is %3 MiB")
                    .arg(SizeText(FHeader.Size))
                    .arg(MebibytesUp(FHeader.DecodedBytes))
                    .arg(MebibytesUp(MaxDecodedBytes)));
        if (IsTruncated(FBytes))
            throw BadImage(FPath, QStringLiteral("the file is truncated"));
        QImage image;
        if (!FReader.read(&image))
            throw BadImage(FPath,
                QStringLiteral("it is damaged or truncated (%1)").arg(FReader.errorString().toLower()));
        return image;
    }

    // As Decode(), reduced to `size` (upright).
    QImage DecodeReduced(QSize size)
    {
        if (ReducesWell())
            FReader.setScaledSize(IsLying() ? size.transposed() : size);
        const QImage image = Decode();
        return image.size() == size ? image
                                    : image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }

private:
    void ChooseDecoder()
    {
        FReader.setAutoDetectImageFormat(true);
        FReader.setDecideFormatFromContent(true);
        if (FChoice == TDecoderChoice::ByContent)
            return;
        const QByteArray extension = QFileInfo(FPath).suffix().toLower().toLatin1();
        QImageReader byExtension(&FBuffer, extension);
        const bool fits = !extension.isEmpty() && byExtension.canRead();
        FBuffer.seek(0);
        if (fits)
            FReader.setFormat(extension);
    }

    // Asks whether the file can be read once, and before anything else: the ICO decoder loses its place over
    // the other questions.
    TImageHeader ReadHeader()
    {
        const bool canRead = FReader.canRead();
        const QSize stored = FReader.size();
        if (!canRead || stored.isEmpty())
            throw BadImage(FPath, QStringLiteral("it is not an image in a format that can be read"));
        const qint64 bitsPerPixel = QImage::toPixelFormat(FReader.imageFormat()).bitsPerPixel();
        return { IsLying() ? stored.transposed() : stored,
            qint64 { stored.width() } * stored.height() * std::max(bitsPerPixel, qint64 { 32 }) / 8 };
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
    QByteArray FBytes;
    TDecoderChoice FChoice;
    TImageHeader FHeader;
    QBuffer FBuffer;
    QImageReader FReader;
};

// A PNG with nothing but a gamma of about 1/2.2 means "as on any screen", not a profile to convert from.
bool IsScreenGamma(const QColorSpace& space)
{
    constexpr float ScreenGamma = 2.2F;
    return space.primaries() == QColorSpace::Primaries::SRgb
        && space.transferFunction() == QColorSpace::TransferFunction::Gamma
        && std::abs(space.gamma() - ScreenGamma) < 0.05F;
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
    QImageReader::setAllocationLimit(0); // the limit is ours, with a text that names the size
    QImage image = TFileDecoder(path, choice).Decode();
    ConvertToSrgb(image);
    image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    RefuseNull(image, path);
    return image;
}

TThumbnail LoadThumbnail(const QString& path, QSize box)
{
    QImageReader::setAllocationLimit(0);
    TFileDecoder decoder(path, TDecoderChoice::ByExtension);
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

QString SizeText(QSize size)
{
    return QStringLiteral("%1 x %2").arg(size.width()).arg(size.height());
}

QStringList ReadableImageExtensions()
{
    QStringList extensions;
    for (const QByteArray& format : QImageReader::supportedImageFormats())
        extensions.append(QString::fromLatin1(format));
    return extensions;
}

bool HasReadableExtension(const QString& path)
{
    static const QStringList extensions = ReadableImageExtensions(); // asks every plugin
    return extensions.contains(ExtensionOf(path).mid(1), Qt::CaseInsensitive);
}

} // namespace Corvadine
