#include "images/PngReader.h"

#include "base/Error.h"
#include "images/SourceImage.h"
#include "tests/ImageTesting.h"
#include "tests/Testing.h"

#include <QBuffer>
#include <QImageReader>
#include <QtEndian>

#include <random>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

constexpr QSize Size(37, 11);

// Returns a PNG file with random samples. Its rows have the five filters in turn.
QByteArray RandomPng(int colorType, int depth, int channels, const QByteArray& others, int interlace = 0)
{
    const int rowBytes = (Size.width() * depth * channels + 7) / 8;
    std::mt19937 random(static_cast<unsigned>(colorType * 100 + depth));
    QByteArray rows;
    for (int y = 0; y < Size.height(); ++y) {
        rows.append(static_cast<char>(y % 5));
        for (int i = 0; i < rowBytes; ++i)
            rows.append(static_cast<char>(random()));
    }
    const QByteArray header = BigEndian(Size.width()) + BigEndian(Size.height()) + static_cast<char>(depth)
        + static_cast<char>(colorType) + QByteArray(2, '\0') + static_cast<char>(interlace);
    const QByteArray pixels = qCompress(rows).mid(4); // without the length that qCompress() puts in front
    return "\x89PNG\r\n\x1A\n" + PngChunk("IHDR", header) + others + PngChunk("IDAT", pixels.left(100))
        + PngChunk("IDAT", pixels.mid(100)) + PngChunk("IEND", {});
}

QByteArray Palette(int depth)
{
    QByteArray entries;
    for (int i = 0; i < 3 << depth; ++i)
        entries.append(static_cast<char>(i * 37));
    return PngChunk("PLTE", entries);
}

class PngReaderTest : public TFolderTest {
protected:
    bool IsPlain(const QByteArray& bytes) const
    {
        PutFile(FFile, bytes);
        QFile file(FFile);
        return file.open(QIODevice::ReadOnly) && TPngReader(file).IsPlain();
    }

    const QString FFile = Path("a.png");
};

// Expects that the pictures look the same. The colors of fully transparent pixels may differ. All samples may
// differ by the rounding from 16 bits.
void ExpectSame(QImage image, QImage expected)
{
    image.convertTo(QImage::Format_ARGB32);
    expected.convertTo(QImage::Format_ARGB32);
    ASSERT_EQ(image.size(), expected.size());
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor a = image.pixelColor(x, y);
            const QColor b = expected.pixelColor(x, y);
            ASSERT_NEAR(a.alpha(), b.alpha(), 1) << x << ' ' << y;
            if (a.alpha() == 0)
                continue;
            ASSERT_NEAR(a.red(), b.red(), 1) << x << ' ' << y;
            ASSERT_NEAR(a.green(), b.green(), 1) << x << ' ' << y;
            ASSERT_NEAR(a.blue(), b.blue(), 1) << x << ' ' << y;
        }
    }
}

} // namespace

TEST_F(PngReaderTest, AgreesWithQtOnEveryColorTypeDepthAndRowFilter)
{
    const QByteArray gray = PngChunk("tRNS", QByteArray::fromHex("0001"));
    const QByteArray color = PngChunk("tRNS", QByteArray::fromHex("002300450067"));
    const QByteArray entries = PngChunk("tRNS", QByteArray::fromHex("00FF"));
    const std::vector<std::tuple<int, int, int, QByteArray>> kinds { { 0, 1, 1, {} }, { 0, 2, 1, gray },
        { 0, 4, 1, gray }, { 0, 8, 1, {} }, { 0, 8, 1, gray }, { 0, 16, 1, {} }, { 2, 8, 3, {} },
        { 2, 8, 3, color }, { 2, 16, 3, {} }, { 3, 1, 1, Palette(1) }, { 3, 2, 1, Palette(2) + entries },
        { 3, 4, 1, Palette(4) }, { 3, 8, 1, Palette(8) + entries }, { 4, 8, 2, {} }, { 4, 16, 2, {} },
        { 6, 8, 4, PngChunk("gAMA", BigEndian(45455)) + PngChunk("tEXt", "Title") },
        { 6, 16, 4, PngChunk("sRGB", "\x01") } };
    for (const auto& [type, depth, channels, others] : kinds) {
        SCOPED_TRACE(testing::Message() << "color type " << type << ", " << depth << " bits");
        QByteArray bytes = RandomPng(type, depth, channels, others);
        ASSERT_TRUE(IsPlain(bytes));
        QBuffer buffer(&bytes);
        ExpectSame(LoadSourceImage(FFile), QImageReader(&buffer, "png").read());
    }
}

TEST_F(PngReaderTest, KeepsTheTransparentColorOfSixteenBits)
{
    // Qt loses the transparent color. One pixel has this color. The other pixel differs from it in the lowest
    // bit.
    const QByteArray header = BigEndian(2) + BigEndian(1) + QByteArray::fromHex("1002000000");
    const QByteArray pixels = qCompress(QByteArray::fromHex("00"
                                                            "123456789ABC"
                                                            "123456789ABD"))
                                  .mid(4);
    PutFile(FFile,
        "\x89PNG\r\n\x1A\n" + PngChunk("IHDR", header) + PngChunk("tRNS", QByteArray::fromHex("123456789ABC"))
            + PngChunk("IDAT", pixels) + PngChunk("IEND", {}));
    const QImage image = LoadSourceImage(FFile);
    EXPECT_EQ(image.format(), QImage::Format_RGBA64);
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);
    EXPECT_EQ(image.pixelColor(1, 0).rgba64(), QRgba64::fromRgba64(0x1234, 0x5678, 0x9ABD, 0xFFFF));
}

TEST_F(PngReaderTest, LeavesAllOtherFilesToQt)
{
    const QByteArray plain = RandomPng(6, 8, 4, {});
    EXPECT_TRUE(IsPlain(plain));
    for (qsizetype length = 0; length < plain.size(); ++length)
        ASSERT_FALSE(IsPlain(plain.left(length))) << "cut to " << length;
    for (qsizetype at = 8; at < plain.size(); ++at) {
        QByteArray damaged = plain;
        damaged[at] = static_cast<char>(damaged[at] ^ 4);
        ASSERT_FALSE(IsPlain(damaged)) << "a wrong byte at " << at;
    }
    EXPECT_FALSE(IsPlain(RandomPng(6, 8, 4, {}, 1))) << "interlaced";
    EXPECT_TRUE(IsPlain(RandomPng(6, 8, 3, {})));
    EXPECT_THROW(LoadSourceImage(FFile), TError) << "too few pixels";
    EXPECT_FALSE(IsPlain(RandomPng(3, 8, 1, {}))) << "no palette";
    EXPECT_FALSE(IsPlain(RandomPng(2, 4, 3, {}))) << "a depth that PNG does not have";
    EXPECT_FALSE(IsPlain(RandomPng(6, 8, 4, PngChunk("iCCP", "x")))) << "a profile";
    EXPECT_FALSE(IsPlain(RandomPng(6, 8, 4, PngChunk("gAMA", BigEndian(100000))))) << "a linear picture";
    EXPECT_FALSE(IsPlain(RandomPng(6, 8, 4, PngChunk("XXXX", "x")))) << "a chunk that must be understood";
}
