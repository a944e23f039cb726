#include "generate/pixels/Composition.h"

#include "generate/pixels/Resampler.h"

#include <algorithm>

namespace Corvadine {

namespace {

constexpr int Level = FilteredLevel;
constexpr int Full = 255 * Level; // the value of each channel of opaque white

// One pixel of a filtered picture with its overshoot limited: 0 <= color <= alpha <= Full.
struct TLimited {
    int Blue, Green, Red, Alpha;
};

TLimited Limit(const std::int16_t* bgra)
{
    const int alpha = std::clamp<int>(bgra[3], 0, Full);
    return { std::clamp<int>(bgra[0], 0, alpha), std::clamp<int>(bgra[1], 0, alpha),
        std::clamp<int>(bgra[2], 0, alpha), alpha };
}

std::uint8_t ToByte(int level64)
{
    return static_cast<std::uint8_t>((level64 + Level / 2) / Level);
}

void StraightRow(const std::int16_t* bgra, int width, std::uint8_t* rgba)
{
    for (int x = 0; x < width; ++x, bgra += 4, rgba += 4) {
        const TLimited pixel = Limit(bgra);
        const std::uint8_t alpha = ToByte(pixel.Alpha);
        if (alpha == 0) {
            std::fill_n(rgba, 4, std::uint8_t { 0 });
            continue;
        }
        const auto straight = [&pixel](int color) {
            return static_cast<std::uint8_t>((color * 255 + pixel.Alpha / 2) / pixel.Alpha);
        };
        rgba[0] = straight(pixel.Red);
        rgba[1] = straight(pixel.Green);
        rgba[2] = straight(pixel.Blue);
        rgba[3] = alpha;
    }
}

void StraightRow(const QRgb* pixels, int width, std::uint8_t* rgba)
{
    for (int x = 0; x < width; ++x, rgba += 4) {
        rgba[0] = static_cast<std::uint8_t>(qRed(pixels[x]));
        rgba[1] = static_cast<std::uint8_t>(qGreen(pixels[x]));
        rgba[2] = static_cast<std::uint8_t>(qBlue(pixels[x]));
        rgba[3] = static_cast<std::uint8_t>(qAlpha(pixels[x]));
    }
}

void FlattenRow(const std::int16_t* bgra, int width, TColor background, std::uint8_t* rgb)
{
    for (int x = 0; x < width; ++x, bgra += 4, rgb += 3) {
        const TLimited pixel = Limit(bgra);
        const int through = Full - pixel.Alpha; // how much of the background shows
        const auto blend = [through](int color, int behind) {
            return static_cast<std::uint8_t>((255 * color + behind * through + Full / 2) / Full);
        };
        rgb[0] = blend(pixel.Red, background.Red);
        rgb[1] = blend(pixel.Green, background.Green);
        rgb[2] = blend(pixel.Blue, background.Blue);
    }
}

void FlattenRow(const QRgb* pixels, int width, TColor background, std::uint8_t* rgb)
{
    for (int x = 0; x < width; ++x, rgb += 3) {
        const int alpha = qAlpha(pixels[x]); // 255 for Format_RGB32
        const auto blend = [alpha](int color, int behind) {
            return static_cast<std::uint8_t>((color * alpha + behind * (255 - alpha) + 127) / 255);
        };
        rgb[0] = blend(qRed(pixels[x]), background.Red);
        rgb[1] = blend(qGreen(pixels[x]), background.Green);
        rgb[2] = blend(qBlue(pixels[x]), background.Blue);
    }
}

// Calls compose(y, row) for each row of `image`. A row is an array of int16_t (see TFilteredRowSink) or of
// QRgb.
template <class TCompose> void ForEachRow(const TFittedImage& image, const TCompose& compose)
{
    if (const auto* filtered = std::get_if<TFilteredImage>(&image))
        return Resample(*filtered->Source, filtered->Size, filtered->Filter, compose);
    const auto& picture = std::get<QImage>(image);
    for (int y = 0; y < picture.height(); ++y)
        compose(y, reinterpret_cast<const QRgb*>(picture.constScanLine(y)));
}

void FillRow(std::uint8_t* rgb, int width, TColor color)
{
    for (int x = 0; x < width; ++x, rgb += 3) {
        rgb[0] = color.Red;
        rgb[1] = color.Green;
        rgb[2] = color.Blue;
    }
}

} // namespace

QSize SizeOf(const TFittedImage& image)
{
    if (const auto* filtered = std::get_if<TFilteredImage>(&image))
        return filtered->Size;
    return std::get<QImage>(image).size();
}

TRaster WithAlpha(const TFittedImage& image)
{
    const QSize size = SizeOf(image);
    TRaster raster(size, 4);
    ForEachRow(image, [&](int y, const auto* pixels) { StraightRow(pixels, size.width(), raster.Row(y)); });
    return raster;
}

TRaster FlattenedOnCanvas(const TFittedImage& image, QSize canvas, TColor background)
{
    const QSize size = SizeOf(image);
    const int left = (canvas.width() - size.width()) / 2;
    const int top = (canvas.height() - size.height()) / 2;
    TRaster raster(canvas, 3);
    if (size != canvas)
        for (int y = 0; y < canvas.height(); ++y)
            FillRow(raster.Row(y), canvas.width(), background);
    ForEachRow(image, [&](int y, const auto* pixels) {
        FlattenRow(pixels, size.width(), background, raster.Row(top + y) + std::ptrdiff_t { left } * 3);
    });
    return raster;
}

} // namespace Corvadine
