#include "generate/pixels/IcoWriter.h"

#include "generate/pixels/PngWriter.h"

#include <QDataStream>
#include <QIODevice>

#include <algorithm>
#include <vector>

namespace Corvadine {

namespace {

constexpr int IconDirBytes = 6;
constexpr int IconDirEntryBytes = 16;
constexpr int BitmapInfoHeaderBytes = 40;
constexpr int SmallestPngSide = 256;

// All integers in an icon file are little-endian.
class TLittleEndianStream : public QDataStream {
public:
    explicit TLittleEndianStream(QByteArray* bytes) : QDataStream(bytes, QIODevice::WriteOnly)
    {
        setByteOrder(LittleEndian);
    }
};

void AppendBitmapInfoHeader(QDataStream& out, QSize size, int imageBytes)
{
    out << qint32 { BitmapInfoHeaderBytes }; // biSize
    out << qint32 { size.width() };          // biWidth
    out << qint32 { size.height() * 2 };     // biHeight: rows of colors and rows of the mask
    out << qint16 { 1 };                     // biPlanes
    out << qint16 { 32 };                    // biBitCount
    out << qint32 { 0 };                     // biCompression: BI_RGB
    out << qint32 { imageBytes };            // biSizeImage
    out << qint32 { 0 } << qint32 { 0 };     // biXPelsPerMeter, biYPelsPerMeter
    out << qint32 { 0 } << qint32 { 0 };     // biClrUsed, biClrImportant
}

// One row of pixels, each as blue, green, red, alpha.
QByteArray ColorRow(const std::uint8_t* rgba, int width)
{
    QByteArray row;
    row.reserve(qsizetype { width } * 4);
    for (int x = 0; x < width; ++x, rgba += 4)
        for (const int channel : { 2, 1, 0, 3 })
            row.append(static_cast<char>(rgba[channel]));
    return row;
}

// One row of the mask. Each pixel has one bit, which is 1 if the pixel is fully transparent. The leftmost
// pixel is the highest bit of its byte. The row is padded to a multiple of 32 bits.
QByteArray MaskRow(const std::uint8_t* rgba, int width)
{
    QByteArray row((qsizetype { width } + 31) / 32 * 4, '\0');
    for (int x = 0; x < width; ++x)
        if (rgba[x * 4 + 3] == 0)
            row[x / 8] = static_cast<char>(static_cast<unsigned char>(row[x / 8]) | 0x80U >> x % 8);
    return row;
}

QByteArray EncodeBitmap(const TRaster& image)
{
    QByteArray pixels;
    for (int y = image.Size().height() - 1; y >= 0; --y) // bitmaps start with the bottom row
        pixels += ColorRow(image.Row(y), image.Size().width());
    for (int y = image.Size().height() - 1; y >= 0; --y)
        pixels += MaskRow(image.Row(y), image.Size().width());
    QByteArray bytes;
    TLittleEndianStream out(&bytes);
    AppendBitmapInfoHeader(out, image.Size(), static_cast<int>(pixels.size()));
    out.writeRawData(pixels.constData(), static_cast<int>(pixels.size()));
    return bytes;
}

void AppendIconDirEntry(QDataStream& out, QSize size, qsizetype imageBytes, qsizetype offset)
{
    const auto stored = [](int side) { return static_cast<quint8>(side < 256 ? side : 0); };
    out << stored(size.width());             // bWidth
    out << stored(size.height());            // bHeight
    out << quint8 { 0 };                     // bColorCount: no palette
    out << quint8 { 0 };                     // bReserved
    out << qint16 { 1 };                     // wPlanes
    out << qint16 { 32 };                    // wBitCount
    out << static_cast<quint32>(imageBytes); // dwBytesInRes
    out << static_cast<quint32>(offset);     // dwImageOffset
}

} // namespace

QByteArray EncodeIco(std::span<const TRaster> images, int compression)
{
    std::vector<QByteArray> encoded;
    encoded.reserve(images.size());
    for (const TRaster& image : images) {
        const bool asPng = std::max(image.Size().width(), image.Size().height()) >= SmallestPngSide;
        encoded.push_back(asPng ? EncodePng(image, compression) : EncodeBitmap(image));
    }

    QByteArray file;
    TLittleEndianStream out(&file);
    out << qint16 { 0 };                        // idReserved
    out << qint16 { 1 };                        // idType: icon
    out << static_cast<quint16>(images.size()); // idCount
    qsizetype offset = IconDirBytes + IconDirEntryBytes * static_cast<qsizetype>(images.size());
    for (std::size_t i = 0; i < images.size(); ++i) {
        AppendIconDirEntry(out, images[i].Size(), encoded[i].size(), offset);
        offset += encoded[i].size();
    }
    for (const QByteArray& image : encoded)
        out.writeRawData(image.constData(), static_cast<int>(image.size()));
    return file;
}

} // namespace Corvadine
