#include "generate/ImageFault.h"

#include "base/Error.h"
#include "base/Files.h"
#include "generate/pixels/Resampler.h"
#include "images/SourceImage.h"

#include <QBuffer>
#include <QDataStream>
#include <QFile>
#include <QImageReader>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace Corvadine {

namespace {

using TMaybeFault = std::optional<TImageFault>;

constexpr QByteArrayView PngSignature("\x89PNG\r\n\x1A\n");

// Whether a PNG file has its last chunk, IEND. The bytes of this chunk are always the same. Decoders report
// other missing chunks, but not this one.
bool HasEnd(const QByteArray& png)
{
    constexpr QByteArrayView EndChunk("\0\0\0\0IEND\xAE\x42\x60\x82", 12);
    return png.contains(EndChunk);
}

int LargestDifference(QRgb left, QRgb right)
{
    return std::max({ std::abs(qRed(left) - qRed(right)), std::abs(qGreen(left) - qGreen(right)),
        std::abs(qBlue(left) - qBlue(right)), std::abs(qAlpha(left) - qAlpha(right)) });
}

// Returns how `found` differs from `expected`, or an empty text if both are equal. REQUIRES: both have
// Format_ARGB32 and the same size.
QString DifferenceText(const QImage& found, const QImage& expected)
{
    qint64 count = 0;
    int most = 0;
    for (int y = 0; y < expected.height(); ++y) {
        const auto* const left = reinterpret_cast<const QRgb*>(found.constScanLine(y));
        const auto* const right = reinterpret_cast<const QRgb*>(expected.constScanLine(y));
        for (int x = 0; x < expected.width(); ++x) {
            if (left[x] == right[x])
                continue;
            ++count;
            most = std::max(most, LargestDifference(left[x], right[x]));
        }
    }
    if (count == 0)
        return {};
    return u"%1 of its %2 pixels differ from what a run would write, by up to %3 of 255"_s.arg(count)
        .arg(qint64 { expected.width() } * expected.height())
        .arg(most);
}

// Returns the color type that the PNG must have (https://www.w3.org/TR/png-3/#11IHDR). If several types are
// right and `found` is one of them, returns `found`.
int ExpectedColorType(const TPngForm& form, int found)
{
    constexpr int Rgb = 2;
    constexpr int Palette = 3;
    constexpr int RgbAlpha = 6;
    if (form.Format == TOutputFormat::Colors256)
        return Palette;
    if (!form.HasAlpha && found == Rgb)
        return found;
    return form.HasAlpha.value_or(true) ? RgbAlpha : Rgb;
}

// Does the work of PngFault(), but throws TError if the file cannot be decoded.
TMaybeFault FaultOfPng(const QString& path, const TPngForm& form)
{
    using enum TFaultKind;
    QFile file(path);
    const QImage image = LoadSourceImage(file);
    file.seek(0);
    const QByteArray bytes = file.readAll();
    constexpr qsizetype BitDepthAt = 24; // in the first chunk (IHDR); the color type follows
    if (!bytes.startsWith(PngSignature) || bytes.size() < BitDepthAt + 2)
        return TImageFault { Damaged, u"it is not a PNG file"_s };
    if (!HasEnd(bytes))
        return TImageFault { Damaged, u"the file is truncated"_s };
    if (form.Size && image.size() != *form.Size)
        return TImageFault { Stale,
            u"it has %1 pixels instead of %2"_s.arg(SizeText(image.size()), SizeText(*form.Size)) };
    constexpr int BitDepth = 8;
    const int foundDepth = static_cast<unsigned char>(bytes[BitDepthAt]);
    const int foundType = static_cast<unsigned char>(bytes[BitDepthAt + 1]);
    const int colorType = ExpectedColorType(form, foundType);
    if (foundDepth != BitDepth || foundType != colorType)
        return TImageFault { Stale,
            u"it has color type %1 with %2 bits instead of color type %3 with %4 bits"_s.arg(foundType)
                .arg(foundDepth)
                .arg(colorType)
                .arg(BitDepth) };
    if (form.HasAlpha == false && IsTransparent(image))
        return TImageFault { Stale, u"it is transparent"_s };
    const QString difference = form.Pixels.isNull()
        ? QString()
        : DifferenceText(image.convertToFormat(QImage::Format_ARGB32), form.Pixels);
    return difference.isEmpty() ? TMaybeFault() : TImageFault { Stale, difference };
}

// Returns the images of a Windows icon as the file stores them. Returns nothing if an image is cut off.
std::optional<std::vector<QByteArray>> StoredImages(const QByteArray& file)
{
    constexpr int SkippedBytes = 8; // of an ICONDIRENTRY, up to dwBytesInRes and dwImageOffset
    QDataStream in(file);
    in.setByteOrder(QDataStream::LittleEndian);
    quint16 reserved = 0;
    quint16 type = 0;
    quint16 count = 0;
    in >> reserved >> type >> count;
    std::vector<QByteArray> images;
    images.reserve(count);
    for (int i = 0; i < count; ++i) {
        quint32 size = 0;
        quint32 offset = 0;
        in.skipRawData(SkippedBytes);
        in >> size >> offset;
        const bool isWhole = in.status() == QDataStream::Ok && qint64 { offset } + size <= file.size();
        images.push_back(isWhole ? file.mid(offset, size) : QByteArray());
        if (!isWhole || (images.back().startsWith(PngSignature) && !HasEnd(images.back())))
            return std::nullopt;
    }
    return images;
}

// Returns the decoded images of a Windows icon. A damaged image is null.
std::vector<QImage> DecodedImages(QByteArray file)
{
    QBuffer buffer(&file);
    QImageReader reader(&buffer, "ico");
    std::vector<QImage> images(static_cast<std::size_t>(std::max(reader.imageCount(), 0)));
    for (std::size_t i = 0; i < images.size(); ++i)
        if (reader.jumpToImage(static_cast<int>(i)))
            images[i] = reader.read().convertToFormat(QImage::Format_ARGB32);
    return images;
}

// Returns what is wrong with the number or the sizes of `images`, or that an image is damaged. The pixels are
// not compared.
TMaybeFault IconFormFault(const std::vector<QImage>& images, std::optional<QSize> source)
{
    using enum TFaultKind;
    if (images.size() != IconSizes.size())
        return TImageFault { Damaged,
            u"it holds %1 images instead of %2"_s.arg(images.size()).arg(IconSizes.size()) };
    for (std::size_t i = 0; i < images.size(); ++i) {
        if (images[i].isNull())
            return TImageFault { Damaged, u"its image %1 is damaged"_s.arg(i + 1) };
        if (!source)
            continue;
        const QSize expected = FittedSize(*source, { IconSizes[i], IconSizes[i] });
        if (images[i].size() != expected)
            return TImageFault { Stale,
                u"its image %1 has %2 pixels instead of %3"_s.arg(i + 1).arg(
                    SizeText(images[i].size()), SizeText(expected)) };
    }
    return {};
}

// Returns how an icon differs from the icon file `expected`. `images` are the icon's decoded images, `stored`
// the bytes of the same images in the file. REQUIRES: the images of both icons have the same sizes.
TMaybeFault IconDifference(
    const std::vector<QImage>& images, const std::vector<QByteArray>& stored, const QByteArray& expected)
{
    const std::vector<QImage> expectedImages = DecodedImages(expected);
    const auto expectedStored = StoredImages(expected);
    for (std::size_t i = 0; i < images.size(); ++i) {
        const QString name = u"its image of %1 pixels"_s.arg(SizeText(images[i].size()));
        const QString difference = DifferenceText(images[i], expectedImages[i]);
        if (!difference.isEmpty())
            return TImageFault { TFaultKind::Stale, u"in %1, %2"_s.arg(name, difference) };
        // Decoders take the transparency from the pixels. Old programs use the mask behind the pixels, so the
        // stored bytes are compared, too.
        if (!stored[i].startsWith(PngSignature) && stored[i] != (*expectedStored)[i])
            return TImageFault { TFaultKind::Damaged,
                u"the header or the mask of %1 is missing or wrong"_s.arg(name) };
    }
    return {};
}

// Does the work of IconFault(), but throws TError if the file cannot be read.
TMaybeFault FaultOfIcon(const QString& path, const TIconForm& form)
{
    const QByteArray file = ReadFile(path, u"check the icon"_s);
    if (!form.File.isEmpty() && file == form.File)
        return {};
    const auto stored = StoredImages(file);
    if (!stored)
        return TImageFault { TFaultKind::Damaged, u"the file is truncated"_s };
    const std::vector<QImage> images = DecodedImages(file);
    TMaybeFault fault = IconFormFault(images, form.Source);
    if (fault || form.File.isEmpty())
        return fault;
    return IconDifference(images, *stored, form.File);
}

// Returns the result of `check`. If `check` throws TError, returns a fault with the reason.
template <typename TCheck> TMaybeFault Checked(TCheck check)
{
    try {
        return check();
    } catch (const TError& error) {
        return TImageFault { TFaultKind::Damaged, error.Reason() };
    }
}

QImage ToQtImage(const TRaster& raster)
{
    const int channels = raster.Channels();
    QImage image(raster.Size(), QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        const std::uint8_t* from = raster.Row(y);
        auto* const to = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x, from += channels)
            to[x] = qRgba(from[0], from[1], from[2], channels == 4 ? from[3] : 255);
    }
    return image;
}

QImage ToQtImage(const TPaletteRaster& raster)
{
    QImage image(raster.Indices.data(), raster.Size.width(), raster.Size.height(), raster.Size.width(),
        QImage::Format_Indexed8);
    QList<QRgb> colors;
    colors.reserve(static_cast<qsizetype>(raster.Palette.size()));
    for (const auto& [red, green, blue, alpha] : raster.Palette)
        colors.append(qRgba(red, green, blue, alpha));
    image.setColorTable(colors);
    return image;
}

} // namespace

QImage ToImage(const TRendered& rendered)
{
    return std::visit(
        [](const auto& pixels) { return ToQtImage(pixels).convertToFormat(QImage::Format_ARGB32); },
        rendered);
}

std::optional<TImageFault> PngFault(const QString& path, const TPngForm& form)
{
    return Checked([&] { return FaultOfPng(path, form); });
}

std::optional<TImageFault> IconFault(const QString& path, const TIconForm& form)
{
    return Checked([&] { return FaultOfIcon(path, form); });
}

} // namespace Corvadine
