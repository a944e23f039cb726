#include "images/Metadata.h"

#include "images/SourceImage.h"
#include "tests/ImageTesting.h"
#include "tests/Testing.h"

#include <QBuffer>
#include <QImageReader>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

// Returns EXIF data with one tag, the orientation.
QByteArray Exif(int orientation)
{
    QByteArray exif = QByteArray::fromHex("4D4D002A00000008 0001 0112 0003 00000001 0000 0000 00000000");
    constexpr qsizetype ValueAt = 19;
    exif[ValueAt] = static_cast<char>(orientation);
    return exif;
}

QByteArray PngOf(const QImage& image, const QByteArray& chunk)
{
    constexpr qsizetype AfterHeader = 33;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(image.save(&buffer, "PNG"));
    return bytes.insert(AfterHeader, chunk);
}

class MetadataTest : public TFolderTest {
protected:
    QImage Loaded(const QByteArray& bytes) const
    {
        PutFile(FFile, bytes);
        return LoadSourceImage(FFile);
    }

    const QString FFile = Path("a");
};

struct TTurned {
    int Orientation;
    QSize Size;
    std::vector<int> Reds; // from left to right, from top to bottom
};

// A picture of 3 x 2 pixels with the reds 10 to 60. Pillow's ImageOps.exif_transpose gives these results.
const TTurned AllTurned[] {
    { 0, { 3, 2 }, { 10, 20, 30, 40, 50, 60 } },
    { 1, { 3, 2 }, { 10, 20, 30, 40, 50, 60 } },
    { 2, { 3, 2 }, { 30, 20, 10, 60, 50, 40 } },
    { 3, { 3, 2 }, { 60, 50, 40, 30, 20, 10 } },
    { 4, { 3, 2 }, { 40, 50, 60, 10, 20, 30 } },
    { 5, { 2, 3 }, { 10, 40, 20, 50, 30, 60 } },
    { 6, { 2, 3 }, { 40, 10, 50, 20, 60, 30 } },
    { 7, { 2, 3 }, { 60, 30, 50, 20, 40, 10 } },
    { 8, { 2, 3 }, { 30, 60, 20, 50, 10, 40 } },
    { 9, { 3, 2 }, { 10, 20, 30, 40, 50, 60 } },
};

std::vector<int> RedsOf(const QImage& image)
{
    std::vector<int> reds;
    reds.reserve(6);
    for (int i = 0; i < image.width() * image.height(); ++i)
        reds.push_back(qRed(image.pixel(i % image.width(), i / image.width())));
    return reds;
}

} // namespace

TEST_F(MetadataTest, TurnsPngAndWebpAsTheirExifDataTell)
{
    const QImage stored = Painted(
        { 3, 2 }, QImage::Format_RGB32, [](int x, int y) { return qRgb(10 + 10 * x + 30 * y, 0, 0); });
    for (const auto& [orientation, size, reds] : AllTurned) {
        const QByteArray exif = Exif(orientation);
        for (const auto format :
            { QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_Indexed8, QImage::Format_RGBA64 }) {
            const QImage image = Loaded(PngOf(stored.convertToFormat(format), PngChunk("eXIf", exif)));
            EXPECT_EQ(image.size(), size) << orientation;
            EXPECT_EQ(RedsOf(image), reds) << orientation << ' ' << format;
            EXPECT_EQ(ReadImageHeader(FFile).Size, size);
            EXPECT_EQ(RedsOf(LoadThumbnail(FFile, { 9, 9 }).Picture), reds);
        }
        if (!QImageReader::supportedImageFormats().contains("webp"))
            continue;
        // The same picture as lossless WebP, written by Pillow.
        const QByteArray webp = QByteArray::fromHex("524946465A000000 57454250 565038580A000000"
                                                    "080000000200000100005650384C190000002F024000"
                                                    "002F105588F98F006ADA3660439D7F3935A2FF31BD00"
                                                    "455849461A000000");
        EXPECT_EQ(RedsOf(Loaded(webp + exif)), reds) << orientation;
        EXPECT_EQ(ReadImageHeader(FFile).Size, size);
    }
}

TEST_F(MetadataTest, IgnoresExifDataThatAreDamaged)
{
    QImage image(3, 2, QImage::Format_Mono);
    image.fill(1);
    const QByteArray turned = Exif(6);
    EXPECT_EQ(
        Loaded(PngOf(image, PngChunk("eXIf", "Exif" + QByteArray(2, '\0') + turned))).size(), QSize(2, 3));
    EXPECT_EQ(RedsOf(LoadSourceImage(FFile)), std::vector<int>(6, 255));
    for (qsizetype bytes = 0; bytes < 20; ++bytes)
        EXPECT_EQ(Loaded(PngOf(image, PngChunk("eXIf", turned.first(bytes)))).size(), image.size()) << bytes;
    QByteArray farAway = turned;
    farAway.replace(4, 4, QByteArray::fromHex("FFFFFFFE"));
    EXPECT_EQ(Loaded(PngOf(image, PngChunk("eXIf", farAway))).size(), image.size());
    QByteArray wrongSum = PngChunk("eXIf", turned);
    wrongSum.back() = static_cast<char>(wrongSum.back() ^ 1);
    EXPECT_EQ(Loaded(PngOf(image, wrongSum)).size(), image.size());
}
