#include "generate/pixels/Resampler.h"

#include "generate/pixels/Composition.h"
#include "generate/pixels/ResampleKernels.h"
#include "tests/ImageTesting.h"
#include "tests/Testing.h"

#include <hwy/targets.h>

#include <cmath>
#include <random>

using namespace Corvadine;
using namespace Corvadine::Testing;
using enum TResampleFilter;

namespace {

using TValues = std::vector<int>;

// Runs `kernel` without special instructions and returns the result. Expects that all instruction sets of
// this machine give the same result.
template <typename TKernel> auto SameOnAllTargets(TKernel kernel)
{
    const auto resultOn = [&kernel](std::int64_t targets) { // 0 allows all targets
        hwy::SetSupportedTargetsForTest(targets);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
        return kernel();
    };
    auto plain = resultOn(HWY_SCALAR);
    EXPECT_EQ(resultOn(0), plain);
    for (std::int64_t rest = hwy::SupportedTargets() & ~HWY_SCALAR; rest != 0; rest &= rest - 1)
        EXPECT_EQ(resultOn(rest & -rest), plain) << hwy::TargetName(rest & -rest);
    resultOn(0);
    return plain;
}

// Returns the red, green, blue and alpha of all pixels.
TValues Samples(const TRaster& raster)
{
    TValues values;
    for (int y = 0; y < raster.Size().height(); ++y)
        values.insert(values.end(), raster.Row(y), raster.Row(y) + raster.RowBytes());
    return values;
}

TValues Mixed(const QImage& image, QSize size, TResampleFilter filter)
{
    const TPixelPairImage pairs(image);
    return Samples(WithAlpha(TFilteredImage { &pairs, size, filter }));
}

// Returns the red of all pixels.
TValues Reds(const TValues& samples)
{
    TValues reds;
    for (std::size_t i = 0; i < samples.size(); i += 4)
        reds.push_back(samples[i]);
    return reds;
}

TValues Filtered(const QImage& image, QSize size, TResampleFilter filter)
{
    return Reds(Mixed(image, size, filter));
}

// Returns the samples of `image` at `size` for every filter that mixes pixels, with the name of the filter.
std::vector<std::pair<std::string, TValues>> MixedByAll(const QImage& image, QSize size)
{
    std::vector<std::pair<std::string, TValues>> results;
    for (const TFilterInfo& info : FilterInfos())
        if (!IsPickingFilter(info.Filter))
            results.emplace_back(info.Name, Mixed(image, size, info.Filter));
    return results;
}

std::vector<std::int16_t> Values(const TPixelRows& image, int rowValues)
{
    std::vector<std::int16_t> values;
    for (int y = 0; y < image.Height(); ++y)
        values.insert(values.end(), image.Row(y), image.Row(y) + rowValues);
    return values;
}

} // namespace

// The expected values of bilinear, bicubic and Lanczos are from Pillow 9.4. The other values are from
// ImageMagick 6.9, which cuts off fractions where we round.
TEST(ResamplerTest, KernelsAgreeWithIndependentPrograms)
{
    const QSize smaller(4, 3);
    const QSize larger(11, 5);
    const std::vector<std::tuple<TResampleFilter, QSize, TValues>> references {
        { rfBilinear, smaller, { 111, 136, 135, 120, 129, 120, 138, 125, 127, 153, 132, 114 } },
        { rfBicubic, smaller, { 108, 136, 138, 120, 131, 119, 139, 126, 125, 157, 129, 113 } },
        { rfLanczos3, smaller, { 108, 138, 137, 121, 133, 120, 138, 128, 123, 159, 126, 111 } },
        { rfTriangle, smaller, { 110, 135, 134, 119, 129, 120, 138, 124, 126, 152, 132, 113 } },
        { rfHermite, smaller, { 110, 134, 137, 119, 127, 117, 139, 123, 124, 156, 132, 114 } },
        { rfBell, smaller, { 112, 131, 136, 122, 127, 127, 133, 126, 129, 146, 129, 117 } },
        { rfBSpline, smaller, { 114, 130, 134, 124, 126, 129, 133, 127, 130, 143, 129, 118 } },
        { rfMitchell, smaller, { 110, 133, 136, 121, 129, 123, 136, 126, 127, 152, 129, 114 } },
        { rfMitchell, larger,
            { 42, 71, 104, 139, 153, 104, 132, 177, 123, 52, 86, 127, 172, 146, 128, 149, 106, 136, 154, 142,
                145, 189, 78, 125, 162, 138, 92, 127, 159, 117, 80, 98, 146, 137, 112, 108, 105, 104, 153,
                181, 149, 133, 131, 106, 89, 134, 172, 201, 198, 113, 130, 86, 69, 110, 155 } },
    };
    const QImage pattern = Painted({ 9, 8 }, QImage::Format_RGB32, [](int x, int y) {
        const int gray = (x * 37 + y * 91 + (x * y) % 7 * 13) % 256;
        return qRgb(gray, gray, gray);
    });
    for (const auto& [filter, size, expected] : references) {
        const TValues ours = Filtered(pattern, size, filter);
        ASSERT_EQ(ours.size(), expected.size());
        const std::string name = "filter " + std::to_string(static_cast<int>(filter));
        int differences = 0;
        for (std::size_t i = 0; i < ours.size(); ++i) {
            differences += std::abs(ours[i] - expected[i]);
            EXPECT_NEAR(ours[i], expected[i], 1) << name << " value " << i;
        }
        EXPECT_LT(differences, 0.75 * static_cast<double>(ours.size())) << name;
    }
}

TEST(ResamplerTest, SpeedFiltersTakeTheRightPixels)
{
    const QImage ramp =
        Painted({ 8, 1 }, QImage::Format_RGB32, [](int x, int) { return qRgb(x * 10, x * 10, x * 10); });
    const auto picked = [&ramp](int width, TResampleFilter filter) {
        return Reds(Samples(WithAlpha(PickPixels(ramp, QSize(width, 1), filter))));
    };
    EXPECT_EQ(picked(2, rfNone), TValues({ 0, 40 }));
    EXPECT_EQ(picked(2, rfNearest), TValues({ 20, 60 }));
    EXPECT_EQ(picked(3, rfNearest), TValues({ 10, 40, 60 }));
    EXPECT_EQ(picked(16, rfNone).back(), 70);
    for (const TResampleFilter filter : { rfLinear, rfFastLinear }) {
        EXPECT_EQ(Filtered(ramp, QSize(2, 1), filter), TValues({ 15, 55 })) << "sample points 1.5 and 5.5";
        EXPECT_EQ(Filtered(ramp, QSize(16, 1), filter)[3], 13) << "sample point 1.25";
    }
}

TEST(ResamplerTest, FlatPicturesStayFlatAtAnyReduction)
{
    QImage white(3000, 3, QImage::Format_RGB32);
    white.fill(qRgb(255, 254, 1));
    constexpr std::array Expected { 255, 254, 1, 255 };
    for (const QSize size : { QSize(7, 1), QSize(2999, 3), QSize(3100, 9) })
        for (const auto& [filter, samples] : MixedByAll(white, size))
            for (std::size_t i = 0; i < samples.size(); ++i)
                ASSERT_EQ(samples[i], Expected[i % 4]) << filter << " at " << i;
}

TEST(ResamplerTest, TransparentNeighborsDoNotTintAndOvershootStaysWithinAlpha)
{
    // A red disc with a faint rim. Around the disc is invisible green.
    const QImage image = Painted({ 64, 64 }, QImage::Format_ARGB32, [](int x, int y) {
        const double radius = std::hypot(x - 32, y - 32);
        return radius < 24 ? qRgba(250, 0, 0, radius < 22 ? 255 : 3) : qRgba(0, 255, 0, 0);
    });
    for (const auto& [filter, samples] : MixedByAll(image, QSize(23, 23))) {
        for (std::size_t i = 0; i < samples.size(); i += 4) {
            EXPECT_EQ(samples[i + 1], 0) << filter << ": green shines through";
            const bool isRim = samples[i + 3] > 100 && samples[i + 3] < 255;
            EXPECT_TRUE(!isRim || samples[i] >= 230) << filter << ": a dark fringe";
        }
    }
}

TEST(ResamplerTest, EveryInstructionSetGivesTheValuesOfThePlainCode)
{
    for (const int width : { 1, 2, 3, 5, 7, 8, 9, 15, 16, 17, 31, 33, 64, 65, 131 }) {
        SCOPED_TRACE(width);
        std::mt19937 random(static_cast<unsigned>(width));
        const QImage noise = Painted({ width, 37 }, QImage::Format_ARGB32,
            [&random](int, int) { return static_cast<QRgb>(random()); });
        for (const auto& [filter, size] : { std::pair(rfLanczos3, QSize(width * 2 + 1, 5)),
                 std::pair(rfMitchell, QSize((width + 2) / 3, 41)), std::pair(rfLinear, QSize(4, 4)) })
            SameOnAllTargets([&, f = filter, s = size] {
                std::vector<std::int16_t> values;
                Resample(TPixelPairImage(noise), s, f, [&](int, const std::int16_t* row) {
                    values.insert(values.end(), row, row + std::ptrdiff_t { s.width() } * PixelChannels);
                });
                return values;
            });
    }
}

TEST(ResamplerTest, EveryInstructionSetPremultipliesAllColorsAlike)
{
    const QImage all = Painted({ 257, 256 }, QImage::Format_ARGB32,
        [](int color, int alpha) { return qRgba(color, 255 - color, color ^ 85, alpha); });
    const auto plain = SameOnAllTargets([&all] {
        const TPixelPairImage pairs(all);
        return Values(pairs, pairs.PairCount() * TPixelPairImage::PairValues);
    });
    const std::size_t row255 = plain.size() - 264 * 4;
    EXPECT_EQ(plain[row255 + 200 * 4], (200 ^ 85) * 128) << "blue of pixel 200, opaque";
}

TEST(ResamplerTest, FitsIntoTheBoxAndRoundsToNearest)
{
    EXPECT_EQ(FittedSize({ 640, 427 }, { 87, 87 }), QSize(87, 58)); // the exact height is 58.04
    EXPECT_EQ(FittedSize({ 640, 431 }, { 87, 87 }), QSize(87, 59)); // the exact height is 58.6
    EXPECT_EQ(FittedSize({ 10000, 1 }, { 36, 36 }), QSize(36, 1));
    EXPECT_EQ(FittedSize({ 1, 1 }, { 960, 720 }), QSize(720, 720));
}
