#include "images/SourceImage.h"

#include "base/Error.h"
#include "base/Files.h"
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

// A reader over the bytes of one file. The bytes must outlive it.
class TFileDecoder {
public:
    TFileDecoder(const QString& path, TDecoderChoice choice)
        : FPath(path), FBytes(ReadFile(path, Attempt)), FChoice(choice)
    {
        if (FBytes.isEmpty())
            throw BadImage(path, QStringLiteral("the file is empty"));
        FBuffer.setBuffer(&FBytes);
        FBuffer.open(QIODevice::ReadOnly);
        FReader.setDevice(&FBuffer);
        FReader.setAutoTransform(true);
        ChooseDecoder();
        FCanRead = FReader.canRead(); // asked now: the icon decoder loses its place over the size
        if (FReader.format() == "ico")
            ChooseLargestImage();
    }

    TImageHeader Header()
    {
        const QSize stored = FReader.size();
        if (!FCanRead || stored.isEmpty())
            throw BadImage(FPath, QStringLiteral("it is not an image in a format that can be read"));
        const bool lying = FReader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
        const qint64 bitsPerPixel = QImage::toPixelFormat(FReader.imageFormat()).bitsPerPixel();
        return { lying ? stored.transposed() : stored,
            qint64 { stored.width() } * stored.height() * std::max(bitsPerPixel, qint64 { 32 }) / 8 };
    }

    QImage Decode()
    {
        const TImageHeader header = Header();
        if (header.DecodedBytes > MaxDecodedBytes)
            throw BadImage(FPath,
                QStringLiteral("it has %1 pixels, %2 MiB once decoded, and the limit is %3 MiB")
                    .arg(SizeText(header.Size))
                    .arg((header.DecodedBytes + (1 << 20) - 1) >> 20)
                    .arg(MaxDecodedBytes >> 20));
        if (IsTruncated(FBytes))
            throw BadImage(FPath, QStringLiteral("the file is truncated"));
        QImage image;
        if (!FReader.read(&image))
            throw BadImage(FPath,
                QStringLiteral("it is damaged or truncated (%1)").arg(FReader.errorString().toLower()));
        return image;
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

    QString FPath;
    QByteArray FBytes;
    TDecoderChoice FChoice;
    QBuffer FBuffer;
    QImageReader FReader;
    bool FCanRead = false;
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
    if (image.isNull())
        throw BadImage(path, QStringLiteral("there is not enough memory to decode it"));
    return image;
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

} // namespace Corvadine
