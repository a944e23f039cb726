#pragma once

#include <QByteArray>
#include <QImage>
#include <QtEndian>

// What the tests of images share.
namespace Corvadine::Testing {

// Returns an image whose pixel at (x, y) is `colorAt(x, y)`.
template <typename TColorAt> QImage Painted(QSize size, QImage::Format format, TColorAt colorAt)
{
    QImage image(size, format);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, colorAt(x, y));
    return image;
}

inline QByteArray BigEndian(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

// Returns the checksum of a chunk (https://www.w3.org/TR/png-3/#5CRC-algorithm).
inline quint32 PngChecksum(const QByteArray& bytes)
{
    quint32 crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<uchar>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

inline QByteArray PngChunk(const QByteArray& type, const QByteArray& data)
{
    return BigEndian(static_cast<quint32>(data.size())) + type + data + BigEndian(PngChecksum(type + data));
}

} // namespace Corvadine::Testing
