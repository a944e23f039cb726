#include "images/ColorProfile.h"

#include "images/SourceImage.h"
#include "tests/ImageTesting.h"
#include "tests/Testing.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>

#include <lcms2.h>

#include <algorithm>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

constexpr QRgb Dark = qRgb(20, 40, 60);

QImage Filled(QRgb color, const QColorSpace& space, QImage::Format format = QImage::Format_RGB32)
{
    QImage image(4, 4, format);
    image.fill(color);
    image.setColorSpace(space);
    return image;
}

// Returns a PNG file of `image` with `chunks` after its header. Qt writes the color space as an ICC profile.
QByteArray PngOf(const QImage& image, const QByteArray& chunks = {})
{
    constexpr qsizetype AfterHeader = 33;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(image.save(&buffer, "PNG"));
    return bytes.insert(AfterHeader, chunks);
}

// Returns a chunk cHRM with the primaries of Adobe RGB.
QByteArray AdobePrimaries()
{
    QByteArray numbers;
    for (const quint32 number : { 31270U, 32900U, 64000U, 33000U, 21000U, 71000U, 15000U, 6000U })
        numbers += BigEndian(number);
    return PngChunk("cHRM", numbers);
}

QByteArray BytesOf(const TColorProfile& profile)
{
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile.get(), nullptr, &size);
    QByteArray icc(static_cast<qsizetype>(size), '\0');
    cmsSaveProfileToMem(profile.get(), icc.data(), &size);
    return icc;
}

QByteArray IccChunk(const QByteArray& icc)
{
    return PngChunk("iCCP", QByteArray("name\0\0", 6) + qCompress(icc).mid(4));
}

// Returns a TIFF file of 4 x 4 pixels with four samples of 8 bits. If `photometric` does not mean inks, the
// last sample is straight alpha.
QByteArray Tiff(const QByteArray& pixel, int photometric, const QByteArray& icc, bool isBigEndian)
{
    const auto number = [isBigEndian](qsizetype value) {
        QByteArray bytes = BigEndian(static_cast<quint32>(value));
        if (!isBigEndian)
            std::reverse(bytes.begin(), bytes.end());
        return bytes;
    };
    const auto word = [&](int value) { return isBigEndian ? number(value).last(2) : number(value).first(2); };
    const QByteArray pixels = pixel.repeated(16);
    const QByteArray depths = word(8).repeated(4);
    constexpr qsizetype HeaderBytes = 8;
    const qsizetype depthsAt = HeaderBytes + pixels.size();
    const qsizetype iccAt = depthsAt + depths.size();
    const auto entry = [&](int tag, int type, qsizetype count, const QByteArray& value) {
        return word(tag) + word(type) + number(count) + value.leftJustified(4, '\0');
    };
    constexpr int Short = 3;
    constexpr int Long = 4;
    constexpr int Undefined = 7;
    QByteArrayList entries { entry(256, Short, 1, word(4)), entry(257, Short, 1, word(4)),
        entry(258, Short, 4, number(depthsAt)), entry(259, Short, 1, word(1)),
        entry(262, Short, 1, word(photometric)), entry(273, Long, 1, number(HeaderBytes)),
        entry(277, Short, 1, word(4)), entry(278, Short, 1, word(4)),
        entry(279, Long, 1, number(pixels.size())) };
    constexpr int Inks = 5;
    if (photometric != Inks)
        entries.append(entry(338, Short, 1, word(2)));
    if (!icc.isEmpty())
        entries.append(entry(34675, Undefined, icc.size(), number(iccAt)));
    return (isBigEndian ? QByteArray("MM\0*", 4) : QByteArray("II*\0", 4)) + number(iccAt + icc.size())
        + pixels + depths + icc + word(static_cast<int>(entries.size())) + entries.join() + number(0);
}

class ColorProfileTest : public TFolderTest {
protected:
    QImage Loaded(const QByteArray& bytes) const
    {
        PutFile(FFile, bytes);
        return LoadSourceImage(FFile);
    }

    void ExpectColor(const QByteArray& bytes, QRgb expected) const
    {
        const QRgb color = Loaded(bytes).pixel(1, 1);
        EXPECT_LE(std::abs(qRed(color) - qRed(expected)), 1) << std::hex << color;
        EXPECT_LE(std::abs(qGreen(color) - qGreen(expected)), 1) << std::hex << color;
        EXPECT_LE(std::abs(qBlue(color) - qBlue(expected)), 1) << std::hex << color;
        EXPECT_EQ(qAlpha(color), qAlpha(expected));
        const bool isOpaque = qAlpha(expected) == 255; // premultiplying rounds other pixels
        EXPECT_TRUE(!isOpaque || LoadThumbnail(FFile, { 99, 99 }).Picture.pixel(1, 1) == color);
    }

    const QString FFile = Path("a");
};

} // namespace

TEST_F(ColorProfileTest, ConvertsEveryKindOfProfileToSrgb)
{
    // The values come from the formulas of the color spaces, in floating point.
    const QColorSpace gamma(QColorSpace::Primaries::SRgb, 2.2F);
    ExpectColor(PngOf(Filled(Dark, gamma)), qRgb(12, 35, 57));
    ExpectColor(PngOf(Filled(Dark, gamma).convertToFormat(QImage::Format_Indexed8)), qRgb(12, 35, 57));
    const QColorSpace adobe(QColorSpace::AdobeRgb);
    ExpectColor(PngOf(Filled(qRgb(90, 180, 200), adobe)), qRgb(0, 181, 202));
    const QColorSpace display(QColorSpace::DisplayP3);
    ExpectColor(PngOf(Filled(qRgb(219, 100, 50), display)), qRgb(236, 90, 27));
    EXPECT_EQ(Loaded(PngOf(Filled(qRgba(219, 100, 50, 77), display, QImage::Format_ARGB32))).pixel(0, 0),
        qRgba(236, 90, 27, 77));

    // 16 x 8 pixels with inks on the left and white paper on the right. Pillow wrote the file, with a profile
    // of ours.
    const QByteArray inks = FileBytes(QStringLiteral(CORVADINE_TEST_DATA "/cmyk-profile.jpg"));
    ExpectColor(inks, qRgb(93, 214, 223));
    EXPECT_EQ(Loaded(inks).pixel(12, 4), qRgb(255, 255, 255));
    const QByteArray turned =
        QByteArray::fromHex("FFE1002245786966000049492A0008000000010012010300010000000600000000000000");
    const QImage upright = Loaded(QByteArray(inks).insert(2, turned));
    EXPECT_EQ(upright.size(), QSize(8, 16));
    EXPECT_EQ(upright.pixel(4, 12), qRgb(255, 255, 255));
    EXPECT_EQ(LoadThumbnail(FFile, { 4, 8 }).Picture.pixel(2, 6), qRgb(255, 255, 255));
}

TEST_F(ColorProfileTest, ConvertsGrayByItsProfile)
{
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, 1);
    const TColorProfile profile(cmsCreateGrayProfile(cmsD50_xyY(), curve));
    cmsFreeToneCurve(curve);
    const QByteArray chunk = IccChunk(BytesOf(profile));

    // The values are 1.055 * v ^ (1 / 2.4) - 0.055, the curve of sRGB.
    const QRgb gray = qRgb(100, 100, 100);
    ExpectColor(PngOf(Filled(gray, {}, QImage::Format_Grayscale8), chunk), qRgb(168, 168, 168));
    const QImage deep = Loaded(PngOf(Filled(gray, {}, QImage::Format_Grayscale16), chunk));
    EXPECT_EQ(deep.format(), QImage::Format_RGBX64);
    EXPECT_NEAR(deep.pixelColor(0, 0).rgba64().green(), 43185, 20);
}

TEST_F(ColorProfileTest, ConvertsPngByAProfileWithATable)
{
    // A table with two places for each channel. The lightness depends only on red, and every result is gray.
    std::vector<cmsUInt16Number> nodes;
    for (int node = 0; node < 8; ++node)
        for (const int value : { node < 4 ? 0 : 0xFF00, 0x8000, 0x8000 })
            nodes.push_back(static_cast<cmsUInt16Number>(value));
    const TColorProfile profile(cmsCreateProfilePlaceholder(nullptr));
    cmsSetProfileVersion(profile.get(), 2.1);
    cmsSetDeviceClass(profile.get(), cmsSigOutputClass);
    cmsSetColorSpace(profile.get(), cmsSigRgbData);
    cmsSetPCS(profile.get(), cmsSigLabData);
    cmsPipeline* const pipeline = cmsPipelineAlloc(nullptr, 3, 3);
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocCLut16bit(nullptr, 2, 3, 3, nodes.data()));
    EXPECT_TRUE(cmsWriteTag(profile.get(), cmsSigAToB0Tag, pipeline));
    cmsPipelineFree(pipeline);
    // Lightness 50.2 is gray 119 (https://www.w3.org/TR/css-color-4/#lab-to-lch).
    ExpectColor(PngOf(Filled(qRgb(128, 7, 200), {}), IccChunk(BytesOf(profile))), qRgb(119, 119, 119));
}

TEST_F(ColorProfileTest, TakesTheSamplesOfTiffAsTheyAre)
{
    if (!QImageReader::supportedImageFormats().contains("tiff"))
        return;
    const QByteArray inks = FileBytes(QStringLiteral(CORVADINE_TEST_DATA "/cmyk-profile.jpg"));
    constexpr qsizetype ProfileBytes = 484;
    const QByteArray icc = inks.mid(inks.indexOf("ICC_PROFILE") + 14, ProfileBytes);
    for (const bool isBigEndian : { false, true }) {
        constexpr int Inks = 5;
        ExpectColor(Tiff(QByteArray::fromHex("DC280A1E"), Inks, icc, isBigEndian), qRgb(93, 214, 223));
        // With an alpha of 20, a premultiplied color of 8 bits would keep only 20 levels.
        constexpr int Rgb = 2;
        const QByteArray adobe = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
        const QByteArray pixel = QByteArray::fromHex("5AB4C814");
        EXPECT_EQ(Loaded(Tiff(pixel, Rgb, {}, isBigEndian)).pixel(3, 3), qRgba(90, 180, 200, 20));
        ExpectColor(Tiff(pixel, Rgb, adobe, isBigEndian), qRgba(0, 181, 202, 20));
    }
}

TEST_F(ColorProfileTest, ConvertsTheGammaAndPrimariesOfPng)
{
    const QByteArray linear = PngChunk("gAMA", BigEndian(100000));
    const QByteArray screen = PngChunk("gAMA", BigEndian(45455));
    ExpectColor(PngOf(Filled(Dark, {}), linear), qRgb(79, 110, 133));
    ExpectColor(PngOf(Filled(qRgb(90, 180, 200), {}), screen + AdobePrimaries()), qRgb(0, 181, 202));
    for (const QByteArray& chunks : { screen, screen + PngChunk("eXIf", "x"), PngChunk("gAMA", BigEndian(0)),
             AdobePrimaries(), linear + PngChunk("sRGB", QByteArray(1, '\0')) + PngChunk("eXIf", "x") })
        EXPECT_EQ(Loaded(PngOf(Filled(Dark, {}), chunks)).pixel(0, 0), Dark) << chunks.toHex().toStdString();
}

TEST_F(ColorProfileTest, KeepsAllBitsOfDeepPictures)
{
    const QColorSpace adobe(QColorSpace::AdobeRgb);
    QImage image = Filled(0, adobe, QImage::Format_RGBA64);
    image.setPixelColor(0, 0, QColor(QRgba64::fromRgba64(30001, 46003, 51007, 12345)));
    const QRgba64 color = Loaded(PngOf(image)).pixelColor(0, 0).rgba64();
    // The values come from the formulas of both spaces, in floating point.
    EXPECT_NEAR(color.red(), 18935, 20);
    EXPECT_NEAR(color.green(), 46387, 20);
    EXPECT_NEAR(color.blue(), 51547, 20);
    EXPECT_EQ(color.alpha(), 12345);
}

TEST_F(ColorProfileTest, LeavesSrgbAndWhatNoProfileDescribesAlone)
{
    const QImage colors = Painted({ 128, 128 }, QImage::Format_ARGB32,
        [](int x, int y) { return static_cast<QRgb>(x + 128 * y) * 2654435761U | 0xFF000000U; });
    for (const auto format : { QImage::Format_RGB32, QImage::Format_RGBX64 }) {
        QImage image = colors.convertToFormat(format);
        const QImage plain = Loaded(PngOf(image));
        image.setColorSpace(QColorSpace::SRgb);
        EXPECT_EQ(Loaded(PngOf(image)), plain);
        for (const QByteArray& icc : { QByteArray(), QByteArray("x"), QByteArray(500, 'x') }) {
            const QByteArray chunk = PngChunk("iCCP", QByteArray("a\0\0", 3) + qCompress(icc).mid(4));
            EXPECT_EQ(Loaded(PngOf(colors.convertToFormat(format), chunk)), plain);
        }
    }
}
