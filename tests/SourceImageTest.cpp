#include "images/SourceImage.h"

#include "tests/ImageTesting.h"
#include "tests/Testing.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <QImageWriter>
#include <QtEndian>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

// Left half red, right half blue.
QImage TwoHalves(QSize size, QImage::Format format)
{
    return Painted(size, QImage::Format_ARGB32, [size](int x, int) {
        return x < size.width() / 2 ? qRgb(200, 30, 30) : qRgb(30, 30, 200);
    }).convertToFormat(format);
}

QImage Loaded(const QString& path)
{
    return LoadSourceImage(path, TDecoderChoice::ByContent);
}

bool IsNear(QRgb a, QRgb b, int tolerance)
{
    return std::abs(qRed(a) - qRed(b)) <= tolerance && std::abs(qGreen(a) - qGreen(b)) <= tolerance
        && std::abs(qBlue(a) - qBlue(b)) <= tolerance && qAlpha(a) == qAlpha(b);
}

// Some formats come with plugins that not every build has.
bool IsRead(const char* format)
{
    return QImageReader::supportedImageFormats().contains(format);
}

} // namespace

class SourceImageTest : public TFolderTest { };

TEST_F(SourceImageTest, LoadsEveryPixelFormatAsThirtyTwoBits)
{
    for (const QImage::Format format :
        { QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGBA64, QImage::Format_RGBX64 }) {
        ASSERT_TRUE(TwoHalves({ 6, 4 }, format).save(Path("a.png")));
        const QImage image = Loaded(Path("a.png"));
        const bool hasAlpha = format == QImage::Format_ARGB32 || format == QImage::Format_RGBA64;
        EXPECT_EQ(image.format(), hasAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32) << format;
        EXPECT_EQ(image.pixel(1, 1), qRgb(200, 30, 30)) << format;
        EXPECT_EQ(image.pixel(5, 3), qRgb(30, 30, 200)) << format;
    }
    ASSERT_TRUE(TwoHalves({ 6, 4 }, QImage::Format_Grayscale8).save(Path("a.png")));
    EXPECT_EQ(qRed(Loaded(Path("a.png")).pixel(0, 0)), qBlue(Loaded(Path("a.png")).pixel(0, 0)));

    QImage palette(4, 4, QImage::Format_Indexed8);
    palette.setColorTable({ qRgba(0, 0, 0, 0), qRgb(9, 8, 7) });
    palette.fill(0);
    ASSERT_TRUE(palette.save(Path("a.png")));
    EXPECT_TRUE(Loaded(Path("a.png")).hasAlphaChannel());

    // 16 x 8 pixels of ink red, made by another program.
    const QImage cmyk = Loaded(QStringLiteral(CORVADINE_TEST_DATA "/cmyk.jpg"));
    EXPECT_EQ(cmyk.size(), QSize(16, 8));
    EXPECT_TRUE(IsNear(cmyk.pixel(8, 4), qRgb(254, 0, 0), 3)) << cmyk.pixelColor(8, 4).name().toStdString();
}

TEST_F(SourceImageTest, AppliesTheOrientationToPixelsAndHeader)
{
    QImageWriter writer(Path("a.jpg"));
    writer.setTransformation(QImageIOHandler::TransformationRotate90);
    ASSERT_TRUE(writer.write(TwoHalves({ 64, 32 }, QImage::Format_RGB32)));
    const QImage image = Loaded(Path("a.jpg"));
    EXPECT_EQ(image.size(), QSize(32, 64));
    EXPECT_TRUE(IsNear(image.pixel(16, 8), qRgb(200, 30, 30), 12));
    EXPECT_TRUE(IsNear(image.pixel(16, 56), qRgb(30, 30, 200), 12));
    EXPECT_EQ(ReadImageHeader(Path("a.jpg"), TDecoderChoice::ByContent).Size, QSize(32, 64));
    const TThumbnail thumbnail = LoadThumbnail(Path("a.jpg"), { 16, 16 });
    EXPECT_EQ(thumbnail.Size, QSize(32, 64));
    EXPECT_EQ(thumbnail.Picture.size(), QSize(8, 16));
    EXPECT_TRUE(IsNear(thumbnail.Picture.pixel(4, 14), qRgb(30, 30, 200), 12));
}

TEST_F(SourceImageTest, ConvertsProfilesToSrgbButLeavesScreenGammaAlone)
{
    QImage image(4, 4, QImage::Format_ARGB32);
    image.fill(qRgba(219, 0, 0, 128));
    image.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
    ASSERT_TRUE(image.save(Path("a.png")));
    EXPECT_TRUE(IsNear(Loaded(Path("a.png")).pixel(0, 0), qRgba(239, 0, 0, 128), 2))
        << Loaded(Path("a.png")).pixelColor(0, 0).name(QColor::HexArgb).toStdString();

    image.setColorSpace(QColorSpace(QColorSpace::Primaries::SRgb, 2.2F));
    ASSERT_TRUE(image.save(Path("a.png")));
    EXPECT_EQ(Loaded(Path("a.png")).pixel(0, 0), qRgba(219, 0, 0, 128));

    // The chunks gAMA and cHRM as many programs write them into every file.
    image.setColorSpace({});
    image.fill(qRgba(20, 40, 60, 255));
    ASSERT_TRUE(image.save(Path("a.png")));
    constexpr qsizetype AfterHeader = 33;
    PutFile(Path("a.png"),
        FileBytes(Path("a.png"))
            .insert(AfterHeader,
                QByteArray::fromHex("0000000467414D410000B18F0BFC6105"
                                    "000000206348524D00007A26000080840000FA00000080E8000075300000EA6000003A98"
                                    "000017709CBA513C")));
    EXPECT_EQ(Loaded(Path("a.png")).pixel(0, 0), qRgba(20, 40, 60, 255));

    image.setColorSpace(QColorSpace(QColorSpace::AdobeRgb)); // has that gamma too
    ASSERT_TRUE(image.save(Path("a.png")));
    EXPECT_LT(qRed(Loaded(Path("a.png")).pixel(0, 0)), 10);
}

TEST_F(SourceImageTest, ChoosesTheDecoderByContentWhenTheExtensionLies)
{
    ASSERT_TRUE(TwoHalves({ 6, 4 }, QImage::Format_RGB32).save(Path("a.jpg"), "PNG"));
    EXPECT_EQ(LoadSourceImage(Path("a.jpg"), TDecoderChoice::ByExtension).pixel(1, 1), qRgb(200, 30, 30));
    EXPECT_EQ(Loaded(Path("a.jpg")).pixel(1, 1), qRgb(200, 30, 30));

    if (!IsRead("tga"))
        return;
    // Red throughout; the start of a TGA is also that of a Windows cursor.
    QByteArray tga(18, '\0');
    for (const auto& [at, value] : { std::pair(2, 2), { 12, 4 }, { 14, 4 }, { 16, 24 } })
        tga[at] = static_cast<char>(value);
    PutFile(Path("a.tga"),
        tga + QByteArray("\0\0\xFF", 3).repeated(16) + QByteArray(8, '\0')
            + QByteArray("TRUEVISION-XFILE.", 18));
    EXPECT_EQ(LoadSourceImage(Path("a.tga"), TDecoderChoice::ByExtension).pixel(0, 0), qRgb(255, 0, 0));
}

TEST_F(SourceImageTest, LoadsTheLargestImageOfAWindowsIcon)
{
    const QString icon = QStringLiteral(CORVADINE_TEST_DATA "/two.ico"); // 16 and 48 pixels, by icotool
    for (const TDecoderChoice choice : { TDecoderChoice::ByContent, TDecoderChoice::ByExtension }) {
        EXPECT_EQ(LoadSourceImage(icon, choice).size(), QSize(48, 48));
        EXPECT_EQ(LoadSourceImage(icon, choice).pixel(40, 3), qRgb(30, 30, 200));
        EXPECT_EQ(ReadImageHeader(icon, choice).Size, QSize(48, 48));
    }
    EXPECT_EQ(LoadThumbnail(icon, { 160, 160 }).Size, QSize(16, 16)) << "the first will do";
}

TEST_F(SourceImageTest, LoadsTheLargestImageOfAnAppleIconThoughItTellsNoSize)
{
    if (!IsRead("icns"))
        GTEST_SKIP();
    const auto chunk = [](const char* type, const QByteArray& data) {
        QByteArray size(4, '\0');
        qToBigEndian(static_cast<quint32>(data.size() + 8), size.data());
        return type + size + data;
    };
    const auto png = [this](int side) {
        TwoHalves({ side, side }, QImage::Format_ARGB32).save(Path("a.png"));
        return FileBytes(Path("a.png"));
    };
    const QByteArray images = chunk("ic07", "none of ours") + chunk("ic08", png(256))
        + chunk("ic09", png(512)) + chunk("ic07", png(128));
    PutFile(Path("a.icns"), chunk("icns", images));
    EXPECT_EQ(Loaded(Path("a.icns")).size(), QSize(512, 512));
    EXPECT_EQ(Loaded(Path("a.icns")).pixel(500, 3), qRgb(30, 30, 200));
    EXPECT_EQ(ReadImageHeader(Path("a.icns"), TDecoderChoice::ByContent).Size, QSize(512, 512));
    EXPECT_EQ(LoadThumbnail(Path("a.icns"), { 16, 16 }).Picture.size(), QSize(16, 16));
}

TEST_F(SourceImageTest, RefusesWhatIsNoWholeImageAndSaysWhy)
{
    const auto bytesOf = [](const char* format) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        TwoHalves({ 200, 200 }, QImage::Format_RGB32).save(&buffer, format);
        return bytes;
    };
    const QByteArray gif = FileBytes(QStringLiteral(CORVADINE_TEST_DATA "/still.gif")); // by another program
    PutFile(Path("a"), gif);
    EXPECT_EQ(Loaded(Path("a")).pixel(6, 4), qRgb(255, 128, 0));
    PutFile(Path("a"), bytesOf("JPG") + "a film, in which by chance stands \xFF\xDA");
    EXPECT_EQ(Loaded(Path("a")).size(), QSize(200, 200));

    const QByteArray os2 = QByteArray::fromHex( // a bitmap with OS/2's short header, red and blue
        "424D22000000000000001A0000000C0000000200010001001800"
        "1E1EC8C81E1E0000");
    PutFile(Path("a"), os2);
    EXPECT_EQ(Loaded(Path("a")).pixel(0, 0), qRgb(200, 30, 30));

    const QImage noise = Painted({ 400, 400 }, QImage::Format_RGB32,
        [](int x, int y) { return 0xFF000000U | static_cast<QRgb>(x + 400 * y) * 2654435761U; });
    ASSERT_TRUE(noise.save(Path("a"), "JPG", 100));
    const QByteArray large = FileBytes(Path("a")); // is read in several pieces
    ASSERT_GT(large.size(), 200'000);
    EXPECT_EQ(Loaded(Path("a")).size(), QSize(400, 400));

    const std::vector<std::tuple<QByteArray, const char*>> cases {
        { QByteArray(), "the file is empty" },
        { "hello", "it is not an image in a format that can be read" },
        { bytesOf("PNG").first(8), "it is not an image in a format that can be read" },
        { bytesOf("PNG").chopped(40), "it is damaged or truncated" },
        { bytesOf("JPG").chopped(600), "the file is truncated" },
        { large.chopped(2), "the file is truncated" },
        { bytesOf("BMP").chopped(1), "the file is truncated" },
        { os2.chopped(1), "the file is truncated" },
        { gif.chopped(3), "the file is truncated" },
        { gif.chopped(8), "the file is truncated" },
        { "P6 20000 20000 255\n",
            "it has 20000 x 20000 pixels, 1526 MiB once decoded, and the limit is 512 MiB" },
    };
    for (const auto& [bytes, reason] : cases) {
        PutFile(Path("a"), bytes);
        EXPECT_THAT(ErrorOf([&] { Loaded(Path("a")); }),
            ::testing::StartsWith("Cannot load the image " + Path("a").toStdString() + ": " + reason));
    }
    ASSERT_TRUE(QFile::resize(Path("a"), qint64 { 2 } << 30)); // a sparse file
    EXPECT_THAT(ErrorOf([&] { Loaded(Path("a")); }),
        ::testing::EndsWith("the file has 2048 MiB, and the limit is 512 MiB"));
    EXPECT_THAT(ErrorOf([&] { Loaded(Path(".")); }), ::testing::EndsWith("it is a folder"));
    EXPECT_THAT(ErrorOf([&] { Loaded(Path("none")); }), ::testing::EndsWith("the file does not exist"));
}

TEST_F(SourceImageTest, ReducesToThumbnails)
{
    const auto thumbnail = [this](const char* name) { return LoadThumbnail(Path(name), { 160, 160 }); };
    const QImage image = Painted({ 640, 320 }, QImage::Format_ARGB32,
        [](int x, int) { return x % 2 == 0 ? qRgb(0, 0, 255) : qRgba(255, 0, 0, 0); });
    ASSERT_TRUE(image.save(Path("alpha.png")));
    EXPECT_EQ(thumbnail("alpha.png").Picture.size(), QSize(160, 80));
    const QRgb halfBlue = thumbnail("alpha.png").Picture.pixel(80, 40);
    EXPECT_TRUE(IsNear(qRgba(qRed(halfBlue), 0, 0, 128), qRgba(0, 0, 0, 128), 1))
        << "tinted by transparent red";

    // Squares of 256 colours: the mixed ones along their edges are too many for a palette.
    const QImage squares = Painted({ 640, 320 }, QImage::Format_RGB32, [](int x, int y) {
        return qRgb(x / 37 % 16 * 17, y / 19 % 16 * 17, x / 37 % 16 + y / 19 % 16 * 16);
    }).convertToFormat(QImage::Format_Indexed8);
    ASSERT_TRUE(squares.save(Path("palette.png")));
    const QImage reduced = thumbnail("palette.png").Picture;
    for (const QPoint& inside : { QPoint(13, 2), QPoint(60, 40), QPoint(153, 79) })
        EXPECT_EQ(reduced.pixel(inside), squares.pixel(inside * 4)) << inside.x() << ", not dithered";

    ASSERT_TRUE(TwoHalves({ 2000, 2 }, QImage::Format_RGB32).save(Path("flat.png")));
    EXPECT_EQ(thumbnail("flat.png").Picture.size(), QSize(160, 1));
    ASSERT_TRUE(TwoHalves({ 20, 10 }, QImage::Format_RGB32).save(Path("small.png")));
    EXPECT_EQ(thumbnail("small.png").Picture.size(), QSize(20, 10));
    PutFile(Path("broken.png"), FileBytes(Path("alpha.png")).chopped(100));
    EXPECT_THAT(ErrorOf([&] { thumbnail("broken.png"); }), ::testing::HasSubstr("damaged or truncated"));
}
