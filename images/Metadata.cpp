#include "images/Metadata.h"

#include <libdeflate.h>

#include <QIODevice>
#include <QtEndian>

#include <array>
#include <memory>

namespace Corvadine {

namespace {

constexpr qint64 MostBytes = qint64 { 16 } * 1024 * 1024; // of a chunk, and of a profile
constexpr qint64 ChunkHeadBytes = 8;                      // length and type

// How a format stores its chunks.
struct TChunkForm {
    qint64 FirstAt; // position of the first chunk
    bool IsPng;     // else WebP: the type stands before the length, and chunks are padded to 16 bits
};

bool IsIntact(QByteArrayView type, const QByteArray& data, quint32 checksum)
{
    const auto sum = libdeflate_crc32(0, type.data(), static_cast<std::size_t>(type.size()));
    return libdeflate_crc32(sum, data.data(), static_cast<std::size_t>(data.size())) == checksum;
}

QByteArray FindChunk(QIODevice& file, TChunkForm form, QByteArrayView type)
{
    for (qint64 at = form.FirstAt; file.seek(at);) {
        const QByteArray head = file.read(ChunkHeadBytes);
        if (head.size() < ChunkHeadBytes)
            break;
        const qint64 length =
            form.IsPng ? qFromBigEndian<quint32>(head.data()) : qFromLittleEndian<quint32>(head.data() + 4);
        if (QByteArrayView(head).sliced(form.IsPng ? 4 : 0, 4) != type) {
            at += ChunkHeadBytes + length + (form.IsPng ? 4 : length % 2);
            continue;
        }
        const QByteArray data = length > MostBytes ? QByteArray() : file.read(length);
        const QByteArray checksum = form.IsPng ? file.read(4) : QByteArray();
        const bool isWhole = data.size() == length && (!form.IsPng || checksum.size() == 4);
        return isWhole && (!form.IsPng || IsIntact(type, data, qFromBigEndian<quint32>(checksum.data())))
            ? data
            : QByteArray();
    }
    return {};
}

// Returns the orientation from the first directory of EXIF data, or 1, "upright", if there is none. Damaged
// data may give a number outside of 1 to 8. EXIF data have the form of a TIFF file.
int OrientationIn(QByteArrayView exif)
{
    constexpr QByteArrayView Prefix("Exif\0\0", 6); // some programs put the prefix of JPEG before the data
    if (exif.startsWith(Prefix))
        exif = exif.sliced(Prefix.size());
    const bool isBigEndian = exif.startsWith("MM");
    const auto word = [&](qsizetype at) {
        if (at < 0 || at + 2 > exif.size())
            return 0;
        const char* bytes = exif.data() + at;
        return int { isBigEndian ? qFromBigEndian<quint16>(bytes) : qFromLittleEndian<quint16>(bytes) };
    };
    const auto number = [&](qsizetype at) {
        return isBigEndian ? qint64 { word(at) } << 16 | word(at + 2)
                           : qint64 { word(at + 2) } << 16 | word(at);
    };
    constexpr int Orientation = 0x0112; // the tag, with a value of 16 bits
    constexpr int Short = 3;
    constexpr qsizetype EntryBytes = 12; // tag, type, count, value
    const qsizetype directory = number(4);
    for (qsizetype i = 0, at = directory + 2; i < word(directory); ++i, at += EntryBytes)
        if (word(at) == Orientation && word(at + 2) == Short)
            return word(at + 8);
    return 1;
}

} // namespace

QByteArray ChunkOf(QIODevice& file, QByteArrayView type)
{
    constexpr qint64 PngHeaderBytes = 8;
    constexpr qint64 WebpHeaderBytes = 12;
    file.seek(0);
    const QByteArray start = file.read(WebpHeaderBytes);
    if (start.startsWith("\x89PNG\r\n\x1A\n"))
        return FindChunk(file, { PngHeaderBytes, true }, type);
    if (start.startsWith("RIFF") && start.endsWith("WEBP"))
        return FindChunk(file, { WebpHeaderBytes, false }, type);
    return {};
}

QByteArray ProfileInChunk(const QByteArray& chunk)
{
    const qsizetype packedAt = chunk.indexOf('\0') + 2; // behind the name, its end and the method
    if (packedAt < 2 || packedAt > chunk.size())
        return {};
    const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> decompressor(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    constexpr qsizetype FewBytes = qsizetype { 16 } * 1024; // enough for most profiles
    for (qsizetype size = FewBytes; decompressor && size <= MostBytes; size *= 4) {
        QByteArray profile(size, Qt::Uninitialized);
        std::size_t written = 0;
        const auto result = libdeflate_zlib_decompress(decompressor.get(), chunk.data() + packedAt,
            static_cast<std::size_t>(chunk.size() - packedAt), profile.data(), static_cast<std::size_t>(size),
            &written);
        if (result == LIBDEFLATE_SUCCESS)
            return profile.first(static_cast<qsizetype>(written));
        if (result != LIBDEFLATE_INSUFFICIENT_SPACE)
            break;
    }
    return {};
}

QImageIOHandler::Transformations ChunkOrientation(QIODevice& file)
{
    constexpr std::array<QImageIOHandler::Transformation, 9> Transformations {
        QImageIOHandler::TransformationNone, // 0 is no orientation
        QImageIOHandler::TransformationNone,
        QImageIOHandler::TransformationMirror,
        QImageIOHandler::TransformationRotate180,
        QImageIOHandler::TransformationFlip,
        QImageIOHandler::TransformationFlipAndRotate90,
        QImageIOHandler::TransformationRotate90,
        QImageIOHandler::TransformationMirrorAndRotate90,
        QImageIOHandler::TransformationRotate270,
    };
    QByteArray exif = ChunkOf(file, "eXIf");
    if (exif.isEmpty())
        exif = ChunkOf(file, "EXIF");
    const auto orientation = static_cast<std::size_t>(OrientationIn(exif));
    return orientation < Transformations.size() ? Transformations[orientation] : Transformations[0];
}

} // namespace Corvadine
