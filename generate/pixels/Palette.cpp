#include "generate/pixels/Palette.h"

#include "base/Error.h"

#include <libimagequant.h>
#ifdef _OPENMP
#include <omp.h>
#endif

#include <algorithm>
#include <bit>
#include <limits>
#include <memory>
#include <unordered_map>

namespace Corvadine {

namespace {

constexpr std::size_t MostColors = 256;

// 1 is the slowest and best, 10 the fastest. Above 5 the quantizer does not refine its palette, and
// gradients show steps.
constexpr int QuantizerSpeed = 5;

using TRgba = std::array<std::uint8_t, 4>;

std::vector<std::uint32_t> RgbaPixels(const TRaster& raster)
{
    const int channels = raster.Channels();
    std::vector<std::uint32_t> pixels;
    pixels.reserve(
        static_cast<std::size_t>(raster.Size().width()) * static_cast<std::size_t>(raster.Size().height()));
    for (int y = 0; y < raster.Size().height(); ++y) {
        const std::uint8_t* from = raster.Row(y);
        for (int x = 0; x < raster.Size().width(); ++x, from += channels) {
            const std::uint8_t alpha = channels == 4 ? from[3] : std::uint8_t { 255 };
            pixels.push_back(std::bit_cast<std::uint32_t>(TRgba { from[0], from[1], from[2], alpha }));
        }
    }
    return pixels;
}

// Orders by alpha first. The tRNS chunk ends with the last transparent color, so this order makes the chunk
// as short as possible.
bool ComesBefore(const TRgba& a, const TRgba& b)
{
    return std::tie(a[3], a[0], a[1], a[2]) < std::tie(b[3], b[0], b[1], b[2]);
}

// Merges equal colors and gives the palette the same order on every system. The quantizer's own order depends
// on how the C library's qsort() arranges colors that are equally frequent.
void SortPalette(TPaletteRaster& raster)
{
    auto sorted = raster.Palette;
    std::sort(sorted.begin(), sorted.end(), ComesBefore);
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    std::array<std::uint8_t, MostColors> placeOf {};
    for (std::size_t i = 0; i < raster.Palette.size(); ++i) {
        const auto place = std::lower_bound(sorted.begin(), sorted.end(), raster.Palette[i], ComesBefore);
        placeOf[i] = static_cast<std::uint8_t>(place - sorted.begin());
    }
    for (std::uint8_t& index : raster.Indices)
        index = placeOf[index];
    raster.Palette = std::move(sorted);
}

// Returns the picture with all its colors, or nothing if it has more than 256 colors.
std::optional<TPaletteRaster> ExactPalette(const TRaster& raster, const std::vector<std::uint32_t>& pixels)
{
    TPaletteRaster result { raster.Size(), {}, {} };
    result.Indices.reserve(pixels.size());
    std::unordered_map<std::uint32_t, std::uint8_t> indexOf;
    for (const std::uint32_t pixel : pixels) {
        const auto next = static_cast<std::uint8_t>(indexOf.size());
        const auto [entry, isNew] = indexOf.try_emplace(pixel, next);
        if (isNew && indexOf.size() > MostColors)
            return std::nullopt;
        if (isNew)
            result.Palette.push_back(std::bit_cast<TRgba>(pixel));
        result.Indices.push_back(entry->second);
    }
    SortPalette(result);
    return result;
}

// A clear pixel is fully transparent.
enum class TKind : std::uint8_t { Clear, Translucent, Opaque };

TKind KindOf(const TRgba& color)
{
    return color[3] == 0 ? TKind::Clear : color[3] == 255 ? TKind::Opaque : TKind::Translucent;
}

// Gives each palette color a kind, which depends on the kinds of its pixels. A color becomes opaque if more
// than half of its pixels are opaque. Other colors become clear if they have more clear pixels than
// translucent ones. If there are opaque pixels, at least one color becomes opaque. If there are clear pixels,
// at least one color becomes clear. REQUIRES: the palette is sorted by alpha.
void SetKinds(TPaletteRaster& reduced, const std::vector<std::uint32_t>& pixels)
{
    std::array<std::array<std::size_t, MostColors>, 3> counts {};
    for (std::size_t i = 0; i < pixels.size(); ++i)
        ++counts[static_cast<std::size_t>(KindOf(std::bit_cast<TRgba>(pixels[i])))][reduced.Indices[i]];
    const auto& [clear, translucent, opaque] = counts;
    const std::size_t count = reduced.Palette.size();
    std::size_t mostOpaque = count - 1;
    for (std::size_t i = count; i-- > 0;) {
        std::uint8_t& alpha = reduced.Palette[i][3];
        if (opaque[i] > clear[i] + translucent[i])
            alpha = 255;
        else if (clear[i] > translucent[i])
            alpha = 0;
        else
            alpha = std::clamp<std::uint8_t>(alpha, 1, 254);
        // The first color has the least alpha, so it stays free for clear pixels.
        if (i > 0 && opaque[i] > opaque[mostOpaque])
            mostOpaque = i;
    }
    const auto isAny = [](const auto& of) {
        return std::any_of(of.begin(), of.end(), [](auto n) { return n > 0; });
    };
    if (isAny(opaque))
        reduced.Palette[mostOpaque][3] = 255;
    if (isAny(clear))
        reduced.Palette.front()[3] = 0;
}

TRgba Premultiplied(const TRgba& color)
{
    const auto times = [&color](int channel) {
        return static_cast<std::uint8_t>((channel * color[3] + 127) / 255);
    };
    return { times(color[0]), times(color[1]), times(color[2]), color[3] };
}

int SquaredDistance(const TRgba& a, const TRgba& b)
{
    int sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    return sum;
}

// If the kinds of a pixel and of its palette color differ, gives the pixel the nearest color instead. An
// opaque or clear pixel gets only a color of its own kind.
void MovePixels(TPaletteRaster& reduced, const std::vector<std::uint32_t>& pixels)
{
    std::array<TRgba, MostColors> premultiplied {};
    std::transform(reduced.Palette.begin(), reduced.Palette.end(), premultiplied.begin(), Premultiplied);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const auto pixel = std::bit_cast<TRgba>(pixels[i]);
        const TKind kind = KindOf(pixel);
        if (kind == KindOf(reduced.Palette[reduced.Indices[i]]))
            continue;
        const TRgba wanted = Premultiplied(pixel);
        int least = std::numeric_limits<int>::max();
        for (std::size_t color = 0; color < reduced.Palette.size(); ++color) {
            if (kind != TKind::Translucent && kind != KindOf(reduced.Palette[color]))
                continue;
            const int distance = SquaredDistance(wanted, premultiplied[color]);
            if (distance < least) {
                least = distance;
                reduced.Indices[i] = static_cast<std::uint8_t>(color);
            }
        }
    }
}

// Sets each palette color to the mean of its pixels, but keeps its kind: a clear color stays clear, and an
// opaque one opaque. The means reduce the error that MovePixels() made.
void TakeMeans(TPaletteRaster& reduced, const std::vector<std::uint32_t>& pixels)
{
    struct TSums {
        std::array<std::uint64_t, 3> Premultiplied {};
        std::uint64_t Alpha = 0;
        std::uint64_t Count = 0;
    };
    std::array<TSums, MostColors> sumsOf {};
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const auto pixel = std::bit_cast<TRgba>(pixels[i]);
        TSums& sums = sumsOf[reduced.Indices[i]];
        for (std::size_t channel = 0; channel < 3; ++channel)
            sums.Premultiplied[channel] += std::uint64_t { pixel[channel] } * pixel[3];
        sums.Alpha += pixel[3];
        ++sums.Count;
    }
    for (std::size_t i = 0; i < reduced.Palette.size(); ++i) {
        const auto& [premultiplied, alpha, count] = sumsOf[i];
        TRgba& color = reduced.Palette[i];
        if (KindOf(color) == TKind::Clear)
            color = {};
        if (KindOf(color) == TKind::Clear || count == 0)
            continue;
        for (std::size_t channel = 0; channel < 3; ++channel)
            color[channel] = static_cast<std::uint8_t>((premultiplied[channel] + alpha / 2) / alpha);
        if (KindOf(color) == TKind::Translucent)
            color[3] = static_cast<std::uint8_t>((alpha + count / 2) / count);
    }
}

// Keeps opaque pixels opaque and clear pixels clear. The quantizer may give such pixels colors that are only
// nearly opaque or nearly clear. Integers make the result the same on every system.
void KeepKinds(TPaletteRaster& reduced, const std::vector<std::uint32_t>& pixels)
{
    SetKinds(reduced, pixels);
    MovePixels(reduced, pixels);
    TakeMeans(reduced, pixels);
}

template <auto Destroy> struct TDestroyer {
    template <typename TObject> void operator()(TObject* object) const { Destroy(object); }
};
using TAttributes = std::unique_ptr<liq_attr, TDestroyer<liq_attr_destroy>>;
using TImage = std::unique_ptr<liq_image, TDestroyer<liq_image_destroy>>;
using TResult = std::unique_ptr<liq_result, TDestroyer<liq_result_destroy>>;

void Require(bool succeeded)
{
    if (!succeeded)
        throw TError(TErrorKind::BadInput, u"Cannot reduce an image to 256 colors"_s);
}

TPaletteRaster Quantized(
    const TRaster& raster, const std::vector<std::uint32_t>& pixels, std::optional<TColor> exact)
{
#ifdef _OPENMP
    // With one thread the library always gives the same result. More threads would save no time, because the
    // run keeps all cores busy.
    omp_set_num_threads(1);
#endif
    const TAttributes attributes(liq_attr_create());
    Require(attributes != nullptr);
    liq_set_speed(attributes.get(), QuantizerSpeed);
    const TImage image(liq_image_create_rgba(
        attributes.get(), pixels.data(), raster.Size().width(), raster.Size().height(), 0));
    Require(image != nullptr);
    if (exact)
        liq_image_add_fixed_color(image.get(), { exact->Red, exact->Green, exact->Blue, 255 });
    liq_result* made = nullptr;
    Require(liq_image_quantize(image.get(), attributes.get(), &made) == LIQ_OK);
    const TResult result(made);
    liq_set_dithering_level(result.get(), 0);
    TPaletteRaster reduced { raster.Size(), {}, std::vector<std::uint8_t>(pixels.size()) };
    Require(
        liq_write_remapped_image(result.get(), image.get(), reduced.Indices.data(), reduced.Indices.size())
        == LIQ_OK);
    const liq_palette* palette = liq_get_palette(result.get());
    for (unsigned i = 0; i < palette->count; ++i) {
        const liq_color& color = palette->entries[i];
        reduced.Palette.push_back(
            { color.r, color.g, color.b, raster.Channels() == 4 ? color.a : std::uint8_t { 255 } });
    }
    SortPalette(reduced);
    if (raster.Channels() == 4) {
        KeepKinds(reduced, pixels);
        SortPalette(reduced);
    }
    return reduced;
}

} // namespace

TPaletteRaster ReduceColors(const TRaster& raster, std::optional<TColor> exact)
{
    Q_ASSERT(!exact || raster.Channels() == 3);
    const std::vector<std::uint32_t> pixels = RgbaPixels(raster);
    if (auto lossless = ExactPalette(raster, pixels))
        return *std::move(lossless);
    return Quantized(raster, pixels, exact);
}

} // namespace Corvadine
