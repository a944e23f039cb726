#include "images/ColorProfile.h"

#include "images/SourceImage.h"
#include "tests/ImageTesting.h"
#include "tests/Testing.h"

#include <QBuffer>
#include <QColorSpace>

#include <lcms2.h>

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

// A chunk cHRM with the primaries of Adobe RGB.
QByteArray AdobePrimaries()
{
    QByteArray numbers;
    for (const quint32 number : { 31270U, 32900U, 64000U, 33000U, 21000U, 71000U, 15000U, 6000U })
        numbers += BigEndian(number);
    return PngChunk("cHRM", numbers);
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
        EXPECT_EQ(LoadThumbnail(FFile, { 99, 99 }).Picture.pixel(1, 1) | 0xFF000000, color | 0xFF000000);
    }

    const QString FFile = Path("a");
};

} // namespace

TEST_F(ColorProfileTest, ConvertsEveryKindOfProfileToSrgb)
{
    // The values are those of the spaces' formulas, in floating point.
    const QColorSpace gamma(QColorSpace::Primaries::SRgb, 2.2F);
    ExpectColor(PngOf(Filled(Dark, gamma)), qRgb(12, 35, 57));
    ExpectColor(PngOf(Filled(Dark, gamma).convertToFormat(QImage::Format_Indexed8)), qRgb(12, 35, 57));
    const QColorSpace adobe(QColorSpace::AdobeRgb);
    ExpectColor(PngOf(Filled(qRgb(90, 180, 200), adobe)), qRgb(0, 181, 202));
    const QColorSpace display(QColorSpace::DisplayP3);
    ExpectColor(PngOf(Filled(qRgb(219, 100, 50), display)), qRgb(236, 90, 27));
    EXPECT_EQ(Loaded(PngOf(Filled(qRgba(219, 100, 50, 77), display, QImage::Format_ARGB32))).pixel(0, 0),
        qRgba(236, 90, 27, 77));

    // 16 x 8 pixels: to the left inks, to the right white paper. Pillow has written it with a profile of
    // ours.
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
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile.get(), nullptr, &size);
    QByteArray icc(static_cast<qsizetype>(size), '\0');
    cmsSaveProfileToMem(profile.get(), icc.data(), &size);
    const QByteArray chunk = PngChunk("iCCP", QByteArray("gray\0\0", 6) + qCompress(icc).mid(4));

    // The values are 1.055 * v ^ (1 / 2.4) - 0.055, the curve of sRGB.
    const QRgb gray = qRgb(100, 100, 100);
    ExpectColor(PngOf(Filled(gray, {}, QImage::Format_Grayscale8), chunk), qRgb(168, 168, 168));
    const QImage deep = Loaded(PngOf(Filled(gray, {}, QImage::Format_Grayscale16), chunk));
    EXPECT_EQ(deep.format(), QImage::Format_RGBX64);
    EXPECT_NEAR(deep.pixelColor(0, 0).rgba64().green(), 43185, 20);
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
    // The values of the formulas of both spaces, in floating point.
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
