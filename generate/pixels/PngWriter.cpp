#include "generate/pixels/PngWriter.h"

#include "base/Error.h"
#include "base/LargeMemory.h"

#include <libdeflate.h>

#include <QtEndian>

#include <algorithm>
#include <memory>
#include <mutex>
#include <new>
#include <span>
#include <utility>
#include <vector>

namespace Corvadine {

namespace {

constexpr int MostCompression = 12; // the highest level of libdeflate
constexpr std::size_t MostChunkBytes = 0x7FFFFFFF;

enum TColorType : std::uint8_t { Rgb = 2, Palette = 3, RgbAlpha = 6 };

struct TFreeCompressor {
    void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};

// Deflates pictures. Its memory is kept for the next picture.
class TDeflater {
public:
    // Returns a zlib stream that is valid until the next call.
    QByteArrayView Deflate(std::span<const std::uint8_t> bytes, int level)
    {
        Prepare(level);
        const std::size_t most = libdeflate_zlib_compress_bound(FCompressor.get(), bytes.size());
        if (most > FDeflated.Size())
            FDeflated = TLargeMemory(most);
        const std::size_t size = libdeflate_zlib_compress(
            FCompressor.get(), bytes.data(), bytes.size(), FDeflated.Data(), FDeflated.Size());
        Q_ASSERT(size > 0); // 0 would mean that the memory is too small
        return { FDeflated.Data(), static_cast<qsizetype>(size) };
    }

private:
    void Prepare(int level)
    {
        if (FCompressor && FLevel == level)
            return;
        FCompressor.reset(libdeflate_alloc_compressor(level));
        if (!FCompressor)
            throw std::bad_alloc();
        FLevel = level;
    }

    std::unique_ptr<libdeflate_compressor, TFreeCompressor> FCompressor;
    int FLevel = 0;
    TLargeMemory FDeflated;
};

// Lends deflaters, each to one thread at a time. They are not thread_local: GCC for Windows frees the memory
// of thread_local objects before it calls their destructors (https://sourceforge.net/p/mingw-w64/bugs/527/).
class TDeflaterPool {
public:
    TDeflater Take()
    {
        const std::lock_guard lock(FMutex);
        if (FIdle.empty())
            return {};
        TDeflater deflater = std::move(FIdle.back());
        FIdle.pop_back();
        return deflater;
    }
    void GiveBack(TDeflater deflater)
    {
        const std::lock_guard lock(FMutex);
        FIdle.push_back(std::move(deflater));
    }

private:
    std::mutex FMutex;
    std::vector<TDeflater> FIdle;
};

void AppendNumber(QByteArray& file, std::uint32_t number)
{
    const quint32 bigEndian = qToBigEndian(number);
    file.append(reinterpret_cast<const char*>(&bigEndian), sizeof(bigEndian));
}

void AppendChunk(QByteArray& file, const char* type, QByteArrayView data)
{
    AppendNumber(file, static_cast<std::uint32_t>(data.size()));
    const qsizetype start = file.size();
    file.append(type).append(data);
    AppendNumber(
        file, libdeflate_crc32(0, file.constData() + start, static_cast<std::size_t>(file.size() - start)));
}

QByteArray HeaderOf(QSize size, TColorType colorType)
{
    QByteArray header;
    AppendNumber(header, static_cast<std::uint32_t>(size.width()));
    AppendNumber(header, static_cast<std::uint32_t>(size.height()));
    header.append(char { 8 }); // bit depth
    header.append(static_cast<char>(colorType));
    header.append(3, '\0'); // compression method, filter method; not interlaced
    return header;
}

// Returns the file of a picture with one byte per sample. `rows` has a byte for the row filter before each
// row. The chunks PLTE and tRNS are left out if they are empty.
QByteArray Write(QSize size, TColorType colorType, std::span<const std::uint8_t> rows, int compression,
    const QByteArray& palette = {}, const QByteArray& alpha = {})
{
    static TDeflaterPool pool;
    TDeflater deflater = pool.Take();
    const QByteArrayView deflated = deflater.Deflate(rows, std::clamp(compression, 0, MostCompression));
    if (size.isEmpty() || static_cast<std::size_t>(deflated.size()) > MostChunkBytes)
        throw TError(TErrorKind::BadInput,
            u"Cannot encode a PNG of %1 x %2 pixels"_s.arg(size.width()).arg(size.height()));
    constexpr qsizetype OtherBytes = 2048; // more than all other chunks take
    QByteArray file;
    file.reserve(deflated.size() + OtherBytes);
    file.append("\x89PNG\r\n\x1A\n");
    AppendChunk(file, "IHDR", HeaderOf(size, colorType));
    if (!palette.isEmpty())
        AppendChunk(file, "PLTE", palette);
    if (!alpha.isEmpty())
        AppendChunk(file, "tRNS", alpha);
    AppendChunk(file, "IDAT", deflated);
    AppendChunk(file, "IEND", {});
    pool.GiveBack(std::move(deflater));
    return file;
}

} // namespace

QByteArray EncodePng(const TRaster& raster, int compression)
{
    return Write(raster.Size(), raster.Channels() == 4 ? RgbAlpha : Rgb, raster.FilteredRows(), compression);
}

QByteArray EncodePng(const TPaletteRaster& raster, int compression)
{
    QByteArray palette;
    QByteArray alpha;
    qsizetype alphaCount = 0; // up to the last transparent entry
    for (const auto& [red, green, blue, opacity] : raster.Palette) {
        for (const std::uint8_t sample : { red, green, blue })
            palette.append(static_cast<char>(sample));
        alpha.append(static_cast<char>(opacity));
        if (opacity < 255)
            alphaCount = alpha.size();
    }
    alpha.truncate(alphaCount);

    std::vector<std::uint8_t> rows;
    rows.reserve(raster.Indices.size() + static_cast<std::size_t>(raster.Size.height()));
    for (auto row = raster.Indices.begin(); row != raster.Indices.end(); row += raster.Size.width()) {
        rows.push_back(0);
        rows.insert(rows.end(), row, row + raster.Size.width());
    }
    return Write(raster.Size, Palette, rows, compression, palette, alpha);
}

} // namespace Corvadine
