#include "images/SourceImage.h"

#include "tests/ImageTesting.h"
#include "tests/Testing.h"
#include "tests/TestingSystem.h"

#include <QImageReader>
#include <QtEndian>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

// Returns an image whose left half is red and whose right half is blue.
QImage TwoHalves(QSize size, QImage::Format format)
{
    return Painted(size, QImage::Format_ARGB32, [size](int x, int) {
        return x < size.width() / 2 ? qRgb(200, 30, 30) : qRgb(30, 30, 200);
    }).convertToFormat(format);
}

bool IsNear(QRgb a, QRgb b, int tolerance)
{
    return std::abs(qRed(a) - qRed(b)) <= tolerance && std::abs(qGreen(a) - qGreen(b)) <= tolerance
        && std::abs(qBlue(a) - qBlue(b)) <= tolerance && qAlpha(a) == qAlpha(b);
}

class SourceImageTest : public TFolderTest {
protected:
    // Writes `image` to FFile and returns the bytes of the file. Tests may change the bytes and then
    // load them.
    QByteArray Saved(const QImage& image, const char* format = "PNG", int quality = -1) const
    {
        EXPECT_TRUE(image.save(FFile, format, quality));
        return FileBytes(FFile);
    }

    QImage Loaded(const QByteArray& bytes) const
    {
        PutFile(FFile, bytes);
        return LoadSourceImage(FFile);
    }

    const QString FFile = Path("a");
};

} // namespace

TEST_F(SourceImageTest, LoadsEveryPixelFormatWithItsDepth)
{
    for (const QImage::Format format :
        { QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGBA64, QImage::Format_RGBX64 }) {
        const QImage image = Loaded(Saved(TwoHalves({ 6, 4 }, format)));
        EXPECT_EQ(image.format(), format);
        EXPECT_EQ(image.pixel(1, 1), qRgb(200, 30, 30)) << format;
        EXPECT_EQ(image.pixel(5, 3), qRgb(30, 30, 200)) << format;
    }
    const QImage gray = Loaded(Saved(TwoHalves({ 6, 4 }, QImage::Format_Grayscale8)));
    EXPECT_EQ(qRed(gray.pixel(0, 0)), qBlue(gray.pixel(0, 0)));

    QImage palette(4, 4, QImage::Format_Indexed8);
    palette.setColorTable({ qRgba(0, 0, 0, 0), qRgb(9, 8, 7) });
    palette.fill(0);
    EXPECT_TRUE(Loaded(Saved(palette)).hasAlphaChannel());

    // A CMYK picture of 16 x 8 red pixels, made by another program.
    const QImage cmyk = Loaded(FileBytes(QStringLiteral(CORVADINE_TEST_DATA "/cmyk.jpg")));
    EXPECT_TRUE(IsNear(cmyk.pixel(8, 4), qRgb(254, 0, 0), 3)) << cmyk.pixelColor(8, 4).name().toStdString();
}

TEST_F(SourceImageTest, AppliesTheOrientationToPixelsAndHeader)
{
    // An Exif segment with one tag: the orientation 6, "turn right". Qt never writes this tag, because it
    // turns the pixels.
    const QByteArray segment =
        QByteArray::fromHex("FFE1002245786966000049492A0008000000010012010300010000000600000000000000");
    constexpr qsizetype AfterStart = 2;
    const QImage image =
        Loaded(Saved(TwoHalves({ 64, 32 }, QImage::Format_RGB32), "JPG").insert(AfterStart, segment));
    EXPECT_EQ(image.size(), QSize(32, 64));
    EXPECT_TRUE(IsNear(image.pixel(16, 8), qRgb(200, 30, 30), 12));
    EXPECT_TRUE(IsNear(image.pixel(16, 56), qRgb(30, 30, 200), 12));
    EXPECT_EQ(ReadImageHeader(FFile).Size, QSize(32, 64));
    const TThumbnail thumbnail = LoadThumbnail(FFile, { 16, 16 });
    EXPECT_EQ(thumbnail.Size, QSize(32, 64));
    EXPECT_EQ(thumbnail.Picture.size(), QSize(8, 16));
    // These pixels are beside the edge between red and blue. The pixels must not be blurred. They would be if
    // the loader computed the reduced size from the picture before its rotation.
    EXPECT_TRUE(IsNear(thumbnail.Picture.pixel(4, 7), qRgb(200, 30, 30), 12));
    EXPECT_TRUE(IsNear(thumbnail.Picture.pixel(4, 8), qRgb(30, 30, 200), 12));
}

TEST_F(SourceImageTest, ReadsItsFormatsByContentWhateverTheNameSays)
{
    const QImage halves = TwoHalves({ 6, 4 }, QImage::Format_RGB32);
    const QImage bits = Painted({ 6, 4 }, QImage::Format_RGB32,
        [](int x, int) { return x < 3 ? qRgb(0, 0, 0) : qRgb(255, 255, 255); });
    const auto load = [this](const QByteArray& bytes) {
        const QImage image = Loaded(bytes);
        for (const char* name : { "a.png", "a.jpg", "a.tga", "a.svg" }) {
            PutFile(Path(name), bytes);
            EXPECT_EQ(LoadSourceImage(Path(name)), image) << name;
        }
        return image.convertToFormat(QImage::Format_RGB32);
    };
    for (const char* format : { "PNG", "BMP", "TIFF", "WEBP", "PPM", "ICO" })
        EXPECT_EQ(load(Saved(halves, format, 100)), halves) << format;
    EXPECT_TRUE(IsNear(load(Saved(halves, "JPG", 100)).pixel(0, 0), qRgb(200, 30, 30), 12));
    EXPECT_EQ(load(FileBytes(QStringLiteral(CORVADINE_TEST_DATA "/still.gif"))).size(), QSize(7, 5));
    for (const QByteArray& bytes : { Saved(bits, "PBM"), Saved(bits, "PGM"), Saved(bits, "XBM"),
             QByteArray("P1\n6 4\n") + QByteArray("1 1 1 0 0 0\n").repeated(4),
             QByteArray("P2 6 4 1\n") + QByteArray("0 0 0 1 1 1\n").repeated(4),
             QByteArray("P3\n# by hand\n6 4 1\n")
                 + QByteArray("0 0 0 0 0 0 0 0 0 1 1 1 1 1 1 1 1 1\n").repeated(4),
             QByteArray("/* by hand */\n#define a_width 6\n#define a_height 4\nstatic char a_bits[] = {\n"
                        "0x07, 0x07, 0x07, 0x07 };\n") })
        EXPECT_EQ(load(bytes), bits) << bytes.toStdString();
}

TEST_F(SourceImageTest, RefusesFormatsThatItDoesNotRead)
{
    const auto expectRefusal = [this](
                                   const QByteArray& bytes, const QString& name, const std::string& reason) {
        PutFile(Path(name), bytes);
        for (const std::string& text : { ErrorOf([&] { LoadSourceImage(Path(name)); }),
                 ErrorOf([&] { ReadImageHeader(Path(name)); }), ErrorOf([&] {
                     LoadThumbnail(Path(name), { 9, 9 });
                 }) })
            EXPECT_EQ(text, "Cannot load the image " + Path(name).toStdString() + ": it is " + reason);
    };
    // A TGA picture of 4 x 4 red pixels. It starts with the same bytes as a Windows cursor.
    const QByteArray tga =
        QByteArray::fromHex("0000020000000000000000000400040018 00") + QByteArray("\0\0\xFF", 3).repeated(16);
    const QByteArray footer = QByteArray(8, '\0') + QByteArray("TRUEVISION-XFILE.", 18);
    const QByteArray svg = "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>";
    const QByteArray box = QByteArray::fromHex("00000018") + "ftypmif1" + QByteArray(4, '\0');
    const std::pair<const char*, QList<QByteArray>> formats[] {
        { "an MNG",
            { QByteArray::fromHex("8A4D4E470D0A1A0A") + Saved(TwoHalves({ 6, 4 }, QImage::Format_RGB32)) } },
        { "a JNG", { QByteArray::fromHex("8B4A4E470D0A1A0A") } },
        { "a TGA", { tga + footer } },
        { "an ICNS", { "icns" + QByteArray::fromHex("00000010") } },
        { "an SVG",
            { svg, "\n" + svg, "\xEF\xBB\xBF" + svg,
                QByteArray("<!-- \xC3\xA4 ") + QByteArray(9000, '-').replace("--", "- ") + "-->" + svg,
                QByteArray("<?xml version='1.0' encoding='UTF-8'?>\n<!DOCTYPE svg [<!ENTITY a 'b'>]>\n")
                    + "<s:svg xmlns:s='http://www.w3.org/2000/svg' a='&a;'>",
                QByteArray("\xFF\xFE<\0s\0v\0g\0>\0", 12) } },
        { "a HEIC", { box + "heicmif1", QByteArray(box).replace("mif1", "heix") } },
        { "an AVIF", { box + "miafavif", QByteArray(box).replace("mif1", "avis") } },
        { "a JPEG 2000",
            { QByteArray::fromHex("0000000C6A5020200D0A870A"), QByteArray::fromHex("FF4FFF51") } },
        { "a JPEG XL", { QByteArray::fromHex("0000000C4A584C200D0A870A"), QByteArray::fromHex("FF0A") } },
        { "a PSD", { "8BPS" } },
        { "a PDF", { "%PDF-1.7" } },
        { "an XPM", { "/* XPM */\nstatic char* a[] = { \"1 1 1 1\", \"a c #FF0000\", \"a\" };" } },
    };
    const std::string hint = " file, which Corvadine does not read: export it as PNG, 1024 x 1024 or larger";
    for (const auto& [name, files] : formats)
        for (const QByteArray& bytes : files)
            expectRefusal(bytes, "picture.png", name + hint);
    expectRefusal(tga, "old.TGA", "a TGA" + hint);
    expectRefusal(QByteArray::fromHex("1F8B0800"), "icon.svgz", "an SVG" + hint);

    for (const QByteArray& bytes : { tga, QByteArray("<html><svg/></html>"), QByteArray("P7\nWIDTH 1\n"),
             QByteArray("P6x"), QByteArray("RIFF____WAVE"), QByteArray::fromHex("1F8B0800"),
             QByteArray::fromHex("00000014") + "ftypisom" + QByteArray(8, '\0'), QByteArray("\0", 1) })
        expectRefusal(bytes, "picture.png", "not an image in a format that can be read");
}

TEST_F(SourceImageTest, LoadsTheLargestImageOfAnIcon)
{
    const QString icon = QStringLiteral(CORVADINE_TEST_DATA "/two.ico"); // 16 and 48 pixels, made by icotool
    EXPECT_EQ(LoadSourceImage(icon).pixel(40, 3), qRgb(30, 30, 200));
    EXPECT_EQ(ReadImageHeader(icon).Size, QSize(48, 48));
    EXPECT_EQ(LoadThumbnail(icon, { 160, 160 }).Size, QSize(16, 16)) << "the first will do";

    // The directory of the icon tells 16 pixels, but the picture in the icon has 40.
    const QByteArray larger = Saved(TwoHalves({ 40, 40 }, QImage::Format_ARGB32));
    EXPECT_EQ(Loaded(QByteArray::fromHex("000001000100 10100000 01002000")
                  + QByteArray::fromHex(
                      QByteArray::number(qToBigEndian(quint32(larger.size())), 16).rightJustified(8, '0'))
                  + QByteArray::fromHex("16000000") + larger)
                  .size(),
        QSize(40, 40));
    EXPECT_EQ(ReadImageHeader(FFile).Size, QSize(40, 40));
}

TEST_F(SourceImageTest, RefusesWhatIsNoWholeImageAndSaysWhy)
{
    const QImage halves = TwoHalves({ 200, 200 }, QImage::Format_RGB32);
    const QByteArray png = Saved(halves);
    const QByteArray jpeg = Saved(halves, "JPG");
    const QByteArray gif = FileBytes(QStringLiteral(CORVADINE_TEST_DATA "/still.gif")); // by another program
    EXPECT_EQ(Loaded(gif).pixel(6, 4), qRgb(255, 128, 0));
    EXPECT_EQ(Loaded(jpeg + "a film, in which by chance stands \xFF\xDA").size(), QSize(200, 200));

    const QByteArray os2 = QByteArray::fromHex( // a bitmap with OS/2's short header, red and blue
        "424D22000000000000001A0000000C00000002000100010018001E1EC8C81E1E0000");
    EXPECT_EQ(Loaded(os2).pixel(0, 0), qRgb(200, 30, 30));

    const QImage noise = Painted({ 400, 400 }, QImage::Format_RGB32,
        [](int x, int y) { return 0xFF000000U | static_cast<QRgb>(x + 400 * y) * 2654435761U; });
    const QByteArray large = Saved(noise, "JPG", 100); // is read in several pieces
    ASSERT_GT(large.size(), 200'000);
    EXPECT_EQ(Loaded(large).size(), QSize(400, 400));

    const std::vector<std::tuple<QByteArray, const char*>> cases {
        { QByteArray(), "the file is empty" },
        { "hello", "it is not an image in a format that can be read" },
        { png.first(8), "it is not an image in a format that can be read" },
        { png.chopped(40), "it is damaged or truncated" },
        { jpeg.chopped(600), "the file is truncated" },
        { large.chopped(2), "the file is truncated" },
        { Saved(halves, "BMP").chopped(1), "the file is truncated" },
        { os2.chopped(1), "the file is truncated" },
        { gif.chopped(3), "the file is truncated" },
        { gif.chopped(8), "the file is truncated" },
        { QByteArray(gif).replace(9, 1, "\xFF"),
            "it is damaged: it has 7 x 65285 pixels, and its header tells 7 x 5" },
        { "P6 20000 20000 255\n",
            "it has 20000 x 20000 pixels, 1526 MiB once decoded, and the limit is 512 MiB" },
    };
    for (const auto& [bytes, reason] : cases)
        EXPECT_THAT(ErrorOf([&, &content = bytes] { Loaded(content); }),
            ::testing::StartsWith("Cannot load the image " + FFile.toStdString() + ": " + reason));
    ASSERT_TRUE(QFile::resize(FFile, qint64 { 2 } << 30)); // a sparse file
    const std::pair<QString, const char*> files[] { { "a",
                                                        "the file has 2048 MiB, and the limit is 512 MiB" },
        { ".", "it is a folder" }, { "none", "the file does not exist" } };
    for (const auto& [name, reason] : files)
        EXPECT_THAT(ErrorOf([&, path = Path(name)] { LoadSourceImage(path); }), ::testing::EndsWith(reason));
}

TEST_F(SourceImageTest, RefusesAnXbmThatIsCut)
{
    const QByteArray xbm = Saved(TwoHalves({ 10, 4 }, QImage::Format_Mono), "XBM");
    EXPECT_EQ(Loaded("/* a comment */\n" + xbm).size(), QSize(10, 4));
    const qsizetype end = xbm.indexOf('}');
    EXPECT_EQ(Loaded(xbm.first(end + 1)).size(), QSize(10, 4));
    for (qsizetype bytes = 1; bytes <= end; ++bytes)
        EXPECT_NE(ErrorOf([&] { Loaded(xbm.first(bytes)); }), "") << bytes;
    EXPECT_THAT(ErrorOf([&] { Loaded(xbm.first(end)); }), ::testing::EndsWith("the file is truncated"));
    EXPECT_THAT(ErrorOf([&] { Loaded(QByteArray(xbm).replace("0x", "  ")); }), ::testing::Not(""));
}

TEST_F(SourceImageTest, NamesTheSizeOfEveryPictureThatIsTooLarge)
{
    const QByteArray bitmap =
        QByteArray::fromHex("28000000 204E0000 204E0000 0100 2000") + QByteArray(24, '\0');
    QByteArray doubled = bitmap; // the doubled height counts the mask, too
    doubled.replace(8, 4, QByteArray::fromHex("409C0000"));
    const QByteArray directory = QByteArray::fromHex("000001000100 00000000 01002000 28000000 16000000");
    const QByteArray png =
        QByteArray::fromHex("89504E470D0A1A0A 0000000D49484452 00004E20 00004E20 0806000000");
    const QByteArray files[] {
        "BM" + QByteArray::fromHex("5E000000 00000000 36000000") + bitmap,
        "#define a_width 20000\n#define a_height 20000\nstatic char a_bits[] = {\n0x00};\n",
        directory + doubled,
        directory + png + BigEndian(PngChecksum(png.mid(12))),
        "GIF89a" + QByteArray::fromHex("204E204E000000 2C 00000000204E204E00 02 03 4C9814 00 3B"),
        png + BigEndian(PngChecksum(png.mid(12))) + PngChunk("IDAT", "x"),
    };
    for (const QByteArray& file : files)
        EXPECT_THAT(ErrorOf([&] { Loaded(file); }),
            ::testing::EndsWith(
                ": it has 20000 x 20000 pixels, 1526 MiB once decoded, and the limit is 512 MiB"))
            << file.left(4).toHex().toStdString();
}

TEST_F(SourceImageTest, PixelsThatABitmapLeavesOutDoNotDependOnMemory)
{
    const auto bitmap = [](const char* compression, const char* bits, const char* codes) { // of 32 x 8 pixels
        return "BM"
            + QByteArray::fromHex(QByteArray("00000000 00000000 3E000000 28000000 20000000 08000000 0100")
                + bits + "00" + compression + "000000 00000000 00000000 00000000 02000000 00000000"
                + "1E1EC800 C81E1E00" + codes);
    };
    // Both bitmaps set 4 pixels of the first row, 3 of the second, and one further pixel.
    const QByteArray rle8 = bitmap("01", "08", "04010000 00030101010000020300 0101 0001");
    const QByteArray rle4 = bitmap("02", "04", "04110000 00031110000203000111 0001");
    for (const QByteArray& bytes : { rle8, rle4 }) {
        std::vector<QImage> images;
        for (const int value : { 1, 200 }) {
            FillNewMemory(value);
            images.push_back(Loaded(bytes));
            images.push_back(LoadThumbnail(FFile, { 9, 9 }).Picture);
        }
        FillNewMemory(0);
        EXPECT_EQ(images[0], images[2]);
        EXPECT_EQ(images[1], images[3]);
        EXPECT_EQ(images[0].pixel(3, 7), qRgb(30, 30, 200));
        EXPECT_EQ(images[0].pixel(20, 1), qRgb(200, 30, 30));
        EXPECT_EQ(Loaded(bytes.chopped(2) + QByteArray::fromHex("0000").repeated(7)).size(), QSize(32, 8))
            << "complete without an end";
        for (const int cut : { 1, 2, 3, 5, 7, 9 })
            EXPECT_THAT(ErrorOf([&, &content = bytes] { Loaded(content.chopped(cut)); }),
                ::testing::EndsWith("the file is truncated"))
                << cut;
    }
}

TEST_F(SourceImageTest, ReadsBitmapsFromTheTopRow)
{
    const QByteArray bottomUp = Saved(
        Painted({ 3, 2 }, QImage::Format_RGB32, [](int x, int y) { return qRgb(x * 100, y * 100, 50); }),
        "BMP");
    QByteArray topDown = bottomUp;
    constexpr qsizetype HeightAt = 22;
    topDown.replace(HeightAt, 4, QByteArray::fromHex("FEFFFFFF"));
    const QImage image = Loaded(topDown);
    EXPECT_EQ(ReadImageHeader(FFile).Size, QSize(3, 2));
    EXPECT_EQ(LoadThumbnail(FFile, { 9, 9 }).Picture.pixel(2, 1), qRgb(200, 0, 50));
    EXPECT_EQ(image, Loaded(bottomUp).mirrored());
    EXPECT_THAT(ErrorOf([&] { Loaded(topDown.chopped(1)); }), ::testing::EndsWith("the file is truncated"));
}

TEST_F(SourceImageTest, FillsTheLowBitsOfBitmapsWithOtherThan8)
{
    // A bitmap of 2 x 1 pixels with `masks` for red, green, blue and alpha. Empty `masks` mean 5-5-5.
    const auto bitmap = [](const char* bits, const QByteArray& masks, const char* pixels) {
        return "BM"
            + QByteArray::fromHex(QByteArray("00000000 00000000 7A000000 6C000000 02000000 01000000 0100")
                + bits + (masks.isEmpty() ? "0000000000" : "0003000000") + QByteArray(40, '0')
                + masks.leftJustified(136, '0') + pixels);
    };
    struct TCase {
        QByteArray Bytes;
        QRgb First;
        QRgb Second;
    };
    // The values are sample * 255 / largest sample, as Pillow and ImageMagick compute them.
    const TCase cases[] {
        { bitmap("10", "", "FF7F 2115"), qRgb(255, 255, 255), qRgb(41, 74, 8) },
        { bitmap("10", "00F80000E00700001F00000000000000", "FFFF 212A"), qRgb(255, 255, 255),
            qRgb(41, 69, 8) },
        { bitmap("10", "000F0000F00000000F00000000F00000", "FFFF 3142"), qRgb(255, 255, 255),
            qRgba(34, 51, 17, 68) },
        { bitmap("20", "0000F03F00FC0F00FF030000000000C0", "FFFFFFFF 00020840"), qRgb(255, 255, 255),
            qRgba(0, 128, 128, 85) },
    };
    for (const TCase& bitmapCase : cases) {
        const QImage image = Loaded(bitmapCase.Bytes);
        EXPECT_EQ(image.size(), QSize(2, 1));
        EXPECT_EQ(image.pixel(0, 0), bitmapCase.First) << std::hex << image.pixel(0, 0);
        EXPECT_EQ(image.pixel(1, 0), bitmapCase.Second) << std::hex << image.pixel(1, 0);
        EXPECT_EQ(LoadThumbnail(FFile, { 9, 9 }).Picture.pixel(0, 0), bitmapCase.First);
    }
}

TEST_F(SourceImageTest, TheCanvasAroundTheFirstPictureOfAGifIsTransparent)
{
    // A red picture of 2 x 2 pixels on a canvas of 4 x 4. Its background color is green. Like browsers, the
    // program does not use the background color.
    const QImage image = Loaded("GIF89a"
        + QByteArray::fromHex("04000400 910000 00FF00 FF0000 0000FF FFFFFF"
                              "2C 0100 0100 0200 0200 00 02 03 4C9814 00 3B"));
    EXPECT_EQ(image, Painted({ 4, 4 }, QImage::Format_ARGB32, [](int x, int y) {
        return x % 3 > 0 && y % 3 > 0 ? qRgb(255, 0, 0) : qRgba(0, 0, 0, 0);
    }));
    EXPECT_EQ(LoadThumbnail(FFile, { 9, 9 }).Picture.pixel(0, 0), qRgba(0, 0, 0, 0));
}

TEST_F(SourceImageTest, ReducesToThumbnails)
{
    const auto reduced = [this](const QImage& image) {
        Saved(image);
        return LoadThumbnail(FFile, { 160, 160 }).Picture;
    };
    const QImage stripes = Painted({ 640, 320 }, QImage::Format_ARGB32,
        [](int x, int) { return x % 2 == 0 ? qRgb(0, 0, 255) : qRgba(255, 0, 0, 0); });
    EXPECT_EQ(reduced(stripes).size(), QSize(160, 80));
    const QRgb halfBlue = reduced(stripes).pixel(80, 40);
    EXPECT_TRUE(IsNear(qRgba(qRed(halfBlue), 0, 0, 128), qRgba(0, 0, 0, 128), 1))
        << "tinted by transparent red";

    // Squares of 256 colors. The mixed colors along their edges are too many for a palette.
    const QImage squares = Painted({ 640, 320 }, QImage::Format_RGB32, [](int x, int y) {
        return qRgb(x / 37 % 16 * 17, y / 19 % 16 * 17, x / 37 % 16 + y / 19 % 16 * 16);
    }).convertToFormat(QImage::Format_Indexed8);
    for (const QPoint& inside : { QPoint(13, 2), QPoint(60, 40), QPoint(153, 79) })
        EXPECT_EQ(reduced(squares).pixel(inside), squares.pixel(inside * 4))
            << inside.x() << ", not dithered";

    EXPECT_EQ(reduced(TwoHalves({ 2000, 2 }, QImage::Format_RGB32)).size(), QSize(160, 1));
    EXPECT_EQ(reduced(TwoHalves({ 20, 10 }, QImage::Format_RGB32)).size(), QSize(20, 10));
    PutFile(FFile, Saved(stripes).chopped(100));
    EXPECT_THAT(ErrorOf([&] {
        LoadThumbnail(FFile, { 160, 160 });
    }),
        ::testing::HasSubstr("damaged or truncated"));
}
