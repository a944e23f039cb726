#include "generate/pixels/Rendering.h"

#include "generate/pixels/Palette.h"
#include "generate/pixels/PngWriter.h"
#include "tests/ImageTesting.h"
#include "tests/Testing.h"

#include <QImage>

#include <thread>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

const TColor Violet = TColor::FromStored(0xC8145A); // red in the lowest byte

// Returns a disc whose color changes smoothly. The area around the disc is yellow if `opaque`, and
// otherwise transparent.
QImage Disc(QSize size, bool opaque)
{
    const QRgb outside = opaque ? qRgb(255, 255, 0) : qRgba(0, 0, 0, 0);
    return Painted(size, opaque ? QImage::Format_RGB32 : QImage::Format_ARGB32, [=](int x, int y) {
        const double dx = 2.0 * x / size.width() - 1;
        const double dy = 2.0 * y / size.height() - 1;
        const QRgb inside = qRgb(x * 255 / size.width(), y * 255 / size.height(), 120);
        return dx * dx + dy * dy < 0.9 ? inside : outside;
    });
}

// Returns the PNG of `source`, rendered for a picture of size `box`.
QByteArray Png(const QImage& source, QSize box, const TRenderOptions& options, bool isOpaque = false)
{
    return RenderPng(TRenderSource(source), RecipeOf(source.size(), box, isOpaque), options);
}

QImage Decoded(const QByteArray& png)
{
    return QImage::fromData(png, "PNG");
}

constexpr int ColorTypeAt = 25; // the position of the color type in a PNG file
constexpr QSize Icon36(36, 36);
const QRgb VioletRgb = qRgb(90, 20, 200);
const TRenderOptions TrueColor { .Background = Violet, .Format = TOutputFormat::TrueColor };
const TRenderOptions Colors256 { .Background = Violet, .Format = TOutputFormat::Colors256 };

} // namespace

TEST(RenderingTest, SquareOutputsKeepShapeAndTransparency)
{
    const QByteArray png = Png(Disc({ 200, 100 }, false), Icon36, TrueColor);
    const QImage image = Decoded(png);
    EXPECT_EQ(image.size(), QSize(36, 18));
    EXPECT_EQ(png[ColorTypeAt], 6);
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(image.pixel(18, 9)), 255);

    const QByteArray opaque = Png(Disc({ 100, 100 }, true), Icon36, TrueColor);
    EXPECT_EQ(opaque[ColorTypeAt], 2) << "a source without alpha channel gets none";
    EXPECT_EQ(Decoded(opaque).pixel(0, 0), qRgb(255, 255, 0));
}

TEST(RenderingTest, OpaqueSquareIsFlattenedInBothFormats)
{
    for (const TRenderOptions& options : { TrueColor, Colors256 }) {
        const QByteArray png = Png(Disc({ 300, 150 }, false), { 1024, 1024 }, options, true);
        EXPECT_EQ(png[ColorTypeAt], options.Format == TOutputFormat::TrueColor ? 2 : 3);
        EXPECT_FALSE(png.contains("tRNS"));
        EXPECT_EQ(Decoded(png).size(), QSize(1024, 512)) << "not padded";
        EXPECT_EQ(Decoded(png).convertToFormat(QImage::Format_RGB32).pixel(0, 0), VioletRgb);
    }
}

TEST(RenderingTest, OtherShapesAreCenteredOnTheBackgroundWithTheOddPixelRight)
{
    const QImage source = Disc({ 1080, 1920 }, true);
    for (const TRenderOptions& options : { TrueColor, Colors256 }) {
        const QImage image =
            Decoded(Png(source, { 427, 320 }, options)).convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(image.size(), QSize(427, 320));
        EXPECT_EQ(image.pixel(122, 5), VioletRgb) << "180 x 320, margins of 123 and 124";
        EXPECT_EQ(image.pixel(123, 0), qRgb(255, 255, 0));
        EXPECT_EQ(image.pixel(302, 0), qRgb(255, 255, 0));
        EXPECT_EQ(image.pixel(303, 5), VioletRgb);
    }
}

TEST(RenderingTest, PaletteHoldsAtMost256ColorsAndKeepsFewExactly)
{
    const QByteArray many = Png(Disc({ 500, 500 }, false), { 192, 192 }, Colors256);
    EXPECT_EQ(many[ColorTypeAt], 3);
    const QImage image = Decoded(many);
    EXPECT_LE(image.colorCount(), 256);
    EXPECT_GT(image.colorCount(), 200);
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(image.pixel(96, 96)), 255);

    TRaster few({ 40, 20 }, 4);
    for (int y = 0; y < 20; ++y)
        for (int i = 0; i < 160; ++i)
            few.Row(y)[i] = static_cast<std::uint8_t>(i % 4 == 3 ? i / 4 * 6 : i / 4);
    const QImage exact =
        Decoded(EncodePng(ReduceColors(few, std::nullopt), 6)).convertToFormat(QImage::Format_ARGB32);
    for (int x = 0; x < 40; ++x)
        EXPECT_EQ(exact.pixel(x, 10), qRgba(x, x, x, x * 6));
}

TEST(RenderingTest, BackgroundSurvivesTheReductionOfColors)
{
    // The picture has far more colors than a palette holds, and some are near violet. The margin is one
    // pixel wide.
    const QImage noisy = Painted({ 1000, 1000 }, QImage::Format_RGB32,
        [](int x, int y) { return qRgb(80 + x % 23, 10 + y % 19, 190 + (x + y) % 29); });
    const QImage image = Decoded(Png(noisy, { 1001, 1000 }, Colors256));
    EXPECT_EQ(image.convertToFormat(QImage::Format_RGB32).pixel(1000, 0), VioletRgb);
}

TEST(RenderingTest, ReductionOfColorsKeepsOpaqueAndClearPixels)
{
    // The upper half of the picture is opaque or nearly opaque, the lower half is clear or nearly clear. If
    // isMixed, every second pixel is fully opaque or fully clear. Otherwise only one pixel of each half is,
    // and then no palette color has mostly opaque or clear pixels.
    for (const bool isMixed : { true, false }) {
        TRaster raster({ 64, 64 }, 4);
        for (int i = 0; i < 64 * 64; ++i) {
            const int x = i % 64;
            const int y = i / 64;
            const bool isExtreme = isMixed ? (x + y) % 2 == 0 : x == 40 && y % 32 == 20;
            const int alpha = y < 32 ? (isExtreme ? 255 : 254 - x % 12) : (isExtreme ? 0 : 1 + x % 12);
            std::uint8_t* pixel = raster.Row(y) + static_cast<std::ptrdiff_t>(4) * x;
            for (const int value : { x * 4, y * 4, (x + y) * 2, alpha })
                *pixel++ = static_cast<std::uint8_t>(value);
        }
        const TPaletteRaster reduced = ReduceColors(raster, std::nullopt);
        int wrong = 0;
        for (int i = 0; i < 64 * 64; ++i) {
            const int alpha = raster.Row(i / 64)[4 * (i % 64) + 3];
            const int now = reduced.Palette[reduced.Indices[static_cast<std::size_t>(i)]][3];
            wrong += alpha % 255 == 0 ? now != alpha : std::abs(now - alpha) > 12;
        }
        EXPECT_EQ(wrong, 0) << (isMixed ? "half of the pixels" : "one of each");
    }
}

TEST(RenderingTest, UntouchedAndPickedPixelsAreExact)
{
    // These colors are hardly visible. Premultiplied pixels would lose these colors.
    const QImage faint = Painted(
        { 36, 36 }, QImage::Format_ARGB32, [](int x, int y) { return qRgba(x * 7, y * 7, 77, 1 + x % 3); });
    EXPECT_EQ(Decoded(Png(faint, Icon36, TrueColor)).convertToFormat(QImage::Format_ARGB32), faint);
    TRenderOptions nearest = TrueColor;
    nearest.Filter = TResampleFilter::rfNearest;
    const QImage doubled = Decoded(Png(faint, { 72, 72 }, nearest));
    EXPECT_EQ(doubled.pixel(51, 33), faint.pixel(25, 16));
}

TEST(RenderingTest, EncodesOnThreadsThatEnd)
{
    const TRaster raster({ 120, 80 }, 3);
    const QByteArray expected = EncodePng(raster, 6);
    for (int round = 0; round < 5; ++round) {
        constexpr int Threads = 8;
        std::vector<std::jthread> threads;
        threads.reserve(Threads);
        for (int i = 0; i < Threads; ++i)
            threads.emplace_back([&] { EXPECT_EQ(EncodePng(raster, 6), expected); });
    }
}

TEST(RenderingTest, TenLevelsDifferAndOnlyUnfilteredRowsAreWritten)
{
    TRaster raster({ 120, 80 }, 3);
    for (int y = 0; y < 80; ++y)
        for (int i = 0; i < 360; ++i)
            raster.Row(y)[i] = static_cast<std::uint8_t>((y * 360 + i) * (y * 360 + i) / 300);
    EXPECT_LT(EncodePng(raster, 6).size(), EncodePng(raster, 1).size());
    EXPECT_LE(EncodePng(raster, 9).size(), EncodePng(raster, 6).size());
    EXPECT_LT(EncodePng(raster, 10).size(), EncodePng(raster, 9).size());
    EXPECT_EQ(EncodePng(raster, 99), EncodePng(raster, 12)) << "as an older database may hold";
    EXPECT_EQ(EncodePng(raster, -1), EncodePng(raster, 0));

    const QByteArray png = EncodePng(raster, 6);
    const qsizetype idat = png.indexOf("IDAT");
    const QByteArray size(4, '\0'); // qUncompress wants the length in front
    QByteArray packed = size + png.mid(idat + 4, png.indexOf("IEND") - 8 - idat - 4);
    packed[2] = char(0xFF);
    const QByteArray rows = qUncompress(packed);
    ASSERT_EQ(rows.size(), 80 * (1 + 360));
    for (qsizetype y = 0; y < 80; ++y)
        EXPECT_EQ(rows[y * 361], 0) << "row filter";
}
