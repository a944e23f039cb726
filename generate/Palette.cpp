#include "generate/Palette.h"

#include "base/Error.h"

#include <libimagequant.h>
#ifdef _OPENMP
#include <omp.h>
#endif

#include <algorithm>
#include <cstring>
#include <memory>
#include <unordered_map>

namespace Corvadine {

namespace {

constexpr std::size_t MostColors = 256;

// From 1, the slowest and best, to 10. At 5 the search still refines its palette; above that flat areas of
// gradients show steps.
constexpr int QuantiserSpeed = 5;

std::vector<std::uint32_t> RgbaPixels(const TRaster& raster)
{
    const auto channels = static_cast<std::size_t>(raster.Channels);
    std::vector<std::uint32_t> pixels(raster.Bytes.size() / channels);
    const std::uint8_t* from = raster.Bytes.data();
    for (std::uint32_t& pixel : pixels) {
        std::array<std::uint8_t, 4> rgba { from[0], from[1], from[2],
            channels == 4 ? from[3] : std::uint8_t { 255 } };
        std::memcpy(&pixel, rgba.data(), rgba.size());
        from += channels;
    }
    return pixels;
}

std::array<std::uint8_t, 4> BytesOf(std::uint32_t pixel)
{
    std::array<std::uint8_t, 4> rgba {};
    std::memcpy(rgba.data(), &pixel, rgba.size());
    return rgba;
}

// By alpha first: transparency then needs the shortest tRNS chunk.
bool ComesBefore(const std::array<std::uint8_t, 4>& a, const std::array<std::uint8_t, 4>& b)
{
    return std::tie(a[3], a[0], a[1], a[2]) < std::tie(b[3], b[0], b[1], b[2]);
}

// The quantiser orders its palette by popularity, and colours of the same popularity as the C library's
// qsort() happens to leave them, which is not the same on every system.
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

// Nothing when the picture has more than 256 colours.
std::optional<TPaletteRaster> ExactPalette(const TRaster& raster, const std::vector<std::uint32_t>& pixels)
{
    std::unordered_map<std::uint32_t, std::uint8_t> indexOf;
    std::uint32_t last = ~pixels.front();
    for (const std::uint32_t pixel : pixels) {
        if (pixel != last && indexOf.try_emplace(pixel).second && indexOf.size() > MostColors)
            return std::nullopt;
        last = pixel;
    }
    TPaletteRaster result { raster.Size, {}, {} };
    for (const auto& entry : indexOf)
        result.Palette.push_back(BytesOf(entry.first));
    std::sort(result.Palette.begin(), result.Palette.end(), ComesBefore);
    for (std::size_t i = 0; i < result.Palette.size(); ++i) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, result.Palette[i].data(), sizeof(pixel));
        indexOf[pixel] = static_cast<std::uint8_t>(i);
    }
    result.Indices.reserve(pixels.size());
    for (const std::uint32_t pixel : pixels)
        result.Indices.push_back(indexOf[pixel]);
    return result;
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
        throw TError(TErrorKind::BadInput, QStringLiteral("Cannot reduce an image to 256 colours"));
}

TPaletteRaster Quantised(
    const TRaster& raster, const std::vector<std::uint32_t>& pixels, std::optional<TColor> exact)
{
#ifdef _OPENMP
    // The library sums in an order that depends on its number of threads, and ours are busy anyway.
    omp_set_num_threads(1);
#endif
    const TAttributes attributes(liq_attr_create());
    Require(attributes != nullptr);
    liq_set_speed(attributes.get(), QuantiserSpeed);
    const TImage image(
        liq_image_create_rgba(attributes.get(), pixels.data(), raster.Size.width(), raster.Size.height(), 0));
    Require(image != nullptr);
    if (exact)
        liq_image_add_fixed_color(image.get(), { exact->Red, exact->Green, exact->Blue, 255 });
    liq_result* made = nullptr;
    Require(liq_image_quantize(image.get(), attributes.get(), &made) == LIQ_OK);
    const TResult result(made);
    liq_set_dithering_level(result.get(), 0);
    TPaletteRaster reduced { raster.Size, {}, std::vector<std::uint8_t>(pixels.size()) };
    Require(
        liq_write_remapped_image(result.get(), image.get(), reduced.Indices.data(), reduced.Indices.size())
        == LIQ_OK);
    const liq_palette* palette = liq_get_palette(result.get());
    for (unsigned i = 0; i < palette->count; ++i) {
        const liq_color& color = palette->entries[i];
        reduced.Palette.push_back(
            { color.r, color.g, color.b, raster.Channels == 4 ? color.a : std::uint8_t { 255 } });
    }
    SortPalette(reduced);
    return reduced;
}

} // namespace

TPaletteRaster ReduceColors(const TRaster& raster, std::optional<TColor> exact)
{
    const std::vector<std::uint32_t> pixels = RgbaPixels(raster);
    if (auto lossless = ExactPalette(raster, pixels))
        return *std::move(lossless);
    return Quantised(raster, pixels, exact);
}

} // namespace Corvadine
