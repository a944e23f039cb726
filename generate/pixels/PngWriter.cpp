#include "generate/pixels/PngWriter.h"

#include "base/Error.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <new>

namespace Corvadine {

namespace {

constexpr int MostCompression = 9;
constexpr std::size_t IdatBytes = std::size_t { 64 } * 1024;

// Filled by libpng's callbacks. An exception must not pass through libpng's C frames. So a callback stores
// its error here, without allocating memory, and libpng jumps back to WriteSteps().
struct TWriteState {
    QByteArray Bytes;
    std::array<char, 160> Error {};
    bool IsOutOfMemory = false;

    bool Append(const png_byte* bytes, std::size_t count) noexcept
    {
        try {
            Bytes.append(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(count));
        } catch (const std::bad_alloc&) {
            IsOutOfMemory = true;
        }
        return !IsOutOfMemory;
    }
};

void OnError(png_structp png, png_const_charp text)
{
    auto* const state = static_cast<TWriteState*>(png_get_error_ptr(png));
    qstrncpy(state->Error.data(), text, state->Error.size());
    png_longjmp(png, 1);
}

void OnWarning(png_structp, png_const_charp) { }

void OnBytes(png_structp png, png_bytep bytes, std::size_t count)
{
    if (!static_cast<TWriteState*>(png_get_io_ptr(png))->Append(bytes, count))
        png_error(png, "out of memory");
}

void OnFlush(png_structp) { }

// The data that WriteSteps() writes: the fields of the header, the palette and the rows.
struct TPngPlan {
    QSize Size;
    int ColorType;
    int Compression;
    const std::uint8_t* Pixels;
    std::size_t RowBytes;
    std::array<png_color, 256> Palette;
    int PaletteCount;
    std::array<png_byte, 256> Alpha;
    int AlphaCount;
};

// After an error, libpng jumps back into this function, which then returns false. Because of the jump, no
// local variable may have a destructor.
bool WriteSteps(png_structp png, png_infop info, const TPngPlan& plan)
{
    if (setjmp(png_jmpbuf(png)) != 0) // NOLINT(cert-err52-cpp): libpng reports errors by a jump
        return false;
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
    png_set_compression_level(png, std::clamp(plan.Compression, 0, MostCompression));
    png_set_compression_buffer_size(png, IdatBytes);
    png_set_IHDR(png, info, static_cast<png_uint_32>(plan.Size.width()),
        static_cast<png_uint_32>(plan.Size.height()), 8, plan.ColorType, PNG_INTERLACE_NONE,
        PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (plan.PaletteCount > 0)
        png_set_PLTE(png, info, plan.Palette.data(), plan.PaletteCount);
    if (plan.AlphaCount > 0)
        png_set_tRNS(png, info, plan.Alpha.data(), plan.AlphaCount, nullptr);
    png_write_info(png, info);
    for (int y = 0; y < plan.Size.height(); ++y)
        png_write_row(png, plan.Pixels + static_cast<std::size_t>(y) * plan.RowBytes);
    png_write_end(png, nullptr);
    return true;
}

QByteArray Write(const TPngPlan& plan)
{
    TWriteState state;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &state, OnError, OnWarning);
    png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
    bool written = false;
    if (info != nullptr) {
        png_set_write_fn(png, &state, OnBytes, OnFlush);
        written = WriteSteps(png, info, plan);
    } else {
        state.IsOutOfMemory = true;
    }
    png_destroy_write_struct(&png, &info);
    if (state.IsOutOfMemory)
        throw std::bad_alloc();
    if (!written)
        throw TError(TErrorKind::BadInput,
            u"Cannot encode a PNG of %1 x %2 pixels: %3"_s.arg(plan.Size.width())
                .arg(plan.Size.height())
                .arg(QLatin1String(state.Error.data())));
    return state.Bytes;
}

} // namespace

QByteArray EncodePng(const TRaster& raster, int compression)
{
    return Write({ raster.Size, raster.Channels == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
        compression, raster.Bytes.data(), raster.RowBytes(), {}, 0, {}, 0 });
}

QByteArray EncodePng(const TPaletteRaster& raster, int compression)
{
    TPngPlan plan { raster.Size, PNG_COLOR_TYPE_PALETTE, compression, raster.Indices.data(),
        static_cast<std::size_t>(raster.Size.width()), {}, 0, {}, 0 };
    for (const auto& [red, green, blue, alpha] : raster.Palette) {
        const auto index = static_cast<std::size_t>(plan.PaletteCount++);
        plan.Palette[index] = { red, green, blue };
        plan.Alpha[index] = alpha;
        if (alpha < 255)
            plan.AlphaCount = plan.PaletteCount;
    }
    return Write(plan);
}

} // namespace Corvadine
