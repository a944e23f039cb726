#include "generate/Rendering.h"

#include "generate/Palette.h"
#include "generate/PngWriter.h"
#include "tests/ImageTesting.h"
#include "tests/Testing.h"

#include <QImage>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

const TColor Violet = TColor::FromStored(0xC8145A); // red in the lowest byte

// A disc whose colour changes smoothly, on transparency or, opaque, on yellow.
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

TRenderSources Sources(const QImage& icon, const QImage& launch = {})
{
    return { std::make_shared<TRenderSource>(icon),
        launch.isNull() ? nullptr : std::make_shared<TRenderSource>(launch) };
}

TGenSettings Settings(TOutputFormat format)
{
    TGenSettings settings;
    settings.Format = format;
    settings.Background = Violet;
    return settings;
}

QByteArray Png(const TRenderSources& sources, const TGenSettings& settings, const TGenRec& record)
{
    const auto launch = sources.Launch ? std::optional(sources.Launch->Info()) : std::nullopt;
    return RenderPng(sources, settings, RecipeOf(record, sources.Icon->Info(), launch));
}

QImage Decoded(const QByteArray& png)
{
    return QImage::fromData(png, "PNG");
}

int ColorType(const QByteArray& png)
{
    return png[25];
}

const TGenRec Icon36 { 36, 36, "Android_LauncherIcon36" };
const TGenRec Splash426 { 426, 320, "Android_SplashImage426" };
const TGenRec AppStore { 1024, 1024, "iOS_AppStore1024" };
const QRgb VioletRgb = qRgb(90, 20, 200);

} // namespace

TEST(RenderingTest, SquareOutputsKeepShapeAndTransparency)
{
    const QByteArray png =
        Png(Sources(Disc({ 200, 100 }, false)), Settings(TOutputFormat::TrueColor), Icon36);
    const QImage image = Decoded(png);
    EXPECT_EQ(image.size(), QSize(36, 18));
    EXPECT_EQ(ColorType(png), 6);
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(image.pixel(18, 9)), 255);

    const QByteArray opaque =
        Png(Sources(Disc({ 100, 100 }, true)), Settings(TOutputFormat::TrueColor), Icon36);
    EXPECT_EQ(ColorType(opaque), 2) << "a source without alpha channel gets none";
    EXPECT_EQ(Decoded(opaque).pixel(0, 0), qRgb(255, 255, 0));
}

TEST(RenderingTest, AppStoreImageIsFlattenedInBothFormats)
{
    for (const TOutputFormat format : { TOutputFormat::TrueColor, TOutputFormat::Colors256 }) {
        const QByteArray png = Png(Sources(Disc({ 300, 150 }, false)), Settings(format), AppStore);
        EXPECT_EQ(ColorType(png), format == TOutputFormat::TrueColor ? 2 : 3);
        EXPECT_FALSE(png.contains("tRNS"));
        EXPECT_EQ(Decoded(png).size(), QSize(1024, 512)) << "not padded";
        EXPECT_FALSE(Decoded(png).hasAlphaChannel());
        EXPECT_EQ(Decoded(png).convertToFormat(QImage::Format_RGB32).pixel(0, 0), VioletRgb);
    }
}

TEST(RenderingTest, LaunchOutputsAreCentredOnTheBackgroundWithTheOddPixelRightAndBelow)
{
    const TRenderSources sources = Sources(Disc({ 64, 64 }, false), Disc({ 1080, 1920 }, true));
    for (const TOutputFormat format : { TOutputFormat::TrueColor, TOutputFormat::Colors256 }) {
        const QImage image =
            Decoded(Png(sources, Settings(format), Splash426)).convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(image.size(), QSize(426, 320));
        EXPECT_EQ(image.pixel(122, 5), VioletRgb) << "180 x 320, margins of 123";
        EXPECT_EQ(image.pixel(123, 0), qRgb(255, 255, 0));
        EXPECT_EQ(image.pixel(302, 0), qRgb(255, 255, 0));
        EXPECT_EQ(image.pixel(303, 5), VioletRgb);
    }
    const TGenRec odd { 427, 320, "Android_SplashImage426" };
    const QImage image = Decoded(Png(sources, Settings(TOutputFormat::TrueColor), odd));
    EXPECT_EQ(image.pixel(122, 5), VioletRgb);
    EXPECT_NE(image.pixel(123, 5), VioletRgb);
    EXPECT_EQ(image.pixel(303, 5), VioletRgb);
}

TEST(RenderingTest, LaunchSourceIsUsedOnlyWhereItBelongs)
{
    const TSourceInfo icon { { 64, 64 }, true };
    const TSourceInfo launch { { 100, 200 }, false };
    EXPECT_TRUE(RecipeOf(Splash426, icon, launch).FromLaunch);
    EXPECT_FALSE(RecipeOf(Icon36, icon, launch).FromLaunch);
    EXPECT_FALSE(RecipeOf(Splash426, icon, std::nullopt).FromLaunch);
    EXPECT_FALSE(RecipeOf(Splash426, icon, TSourceInfo { { 1, 50 }, false }).FromLaunch)
        << "one pixel wide is none";
    EXPECT_EQ(RecipeOf({ 400, 184, "iPhone_Launch2x" }, icon, launch),
        RecipeOf({ 400, 184, "iPhone_LaunchDark2x" }, icon, launch));
    EXPECT_FALSE(
        RecipeOf(AppStore, icon, launch) == RecipeOf({ 1024, 1024, "iPad_AppIcon152" }, icon, launch));
}

TEST(RenderingTest, PaletteHoldsAtMost256ColoursAndKeepsFewExactly)
{
    const QByteArray many = Png(Sources(Disc({ 500, 500 }, false)), Settings(TOutputFormat::Colors256),
        { 192, 192, "Android_LauncherIcon192" });
    EXPECT_EQ(ColorType(many), 3);
    EXPECT_EQ(many[24], 8) << "bits per pixel";
    const QImage image = Decoded(many);
    EXPECT_LE(image.colorCount(), 256);
    EXPECT_GT(image.colorCount(), 200);
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(image.pixel(96, 96)), 255);

    TRaster few({ 40, 20 }, 4);
    for (std::size_t i = 0; i < few.Bytes.size(); ++i)
        few.Bytes[i] = static_cast<std::uint8_t>(i % 4 == 3 ? i / 4 % 40 * 6 : i / 4 % 40);
    const QImage exact =
        Decoded(EncodePng(ReduceColors(few, std::nullopt), 6)).convertToFormat(QImage::Format_ARGB32);
    for (int x = 0; x < 40; ++x)
        EXPECT_EQ(exact.pixel(x, 10), qRgba(x, x, x, x * 6));
}

TEST(RenderingTest, BackgroundSurvivesTheReductionOfColours)
{
    // Far more colours than a palette holds, none of them violet.
    const QImage noisy = Painted({ 300, 600 }, QImage::Format_RGB32,
        [](int x, int y) { return qRgb(x * 7 % 256, y * 5 % 256, (x + y) * 3 % 256); });
    const QImage image = Decoded(Png(Sources(noisy, noisy), Settings(TOutputFormat::Colors256), Splash426));
    EXPECT_EQ(image.convertToFormat(QImage::Format_RGB32).pixel(0, 0), VioletRgb);
}

TEST(RenderingTest, UntouchedAndPickedPixelsAreExact)
{
    // Hardly visible colours, which a premultiplication would lose.
    const QImage faint = Painted(
        { 36, 36 }, QImage::Format_ARGB32, [](int x, int y) { return qRgba(x * 7, y * 7, 77, 1 + x % 3); });
    TGenSettings settings = Settings(TOutputFormat::TrueColor);
    EXPECT_EQ(Decoded(Png(Sources(faint), settings, Icon36)).convertToFormat(QImage::Format_ARGB32), faint);
    settings.Filter = TResampleFilter::rfNearest;
    const QImage doubled = Decoded(Png(Sources(faint), settings, { 72, 72, "Android_LauncherIcon72" }));
    EXPECT_EQ(doubled.pixel(51, 33), faint.pixel(25, 16));
}

TEST(RenderingTest, WritesLevelTenAsNineAndOnlyUnfilteredRows)
{
    TRaster raster({ 120, 80 }, 3);
    for (std::size_t i = 0; i < raster.Bytes.size(); ++i)
        raster.Bytes[i] = static_cast<std::uint8_t>(i * i / 300);
    EXPECT_EQ(EncodePng(raster, 10), EncodePng(raster, 9));
    EXPECT_LT(EncodePng(raster, 9).size(), EncodePng(raster, 1).size());

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
