#include "generate/pixels/Rendering.h"
#include "tests/ImageTesting.h"
#include "tests/Testing.h"

#include <QtEndian>

using namespace Corvadine;
using namespace Corvadine::Testing;

TEST(MainIconTest, SmallImagesAreBitmapsWithAMaskAndLargeOnesPng)
{
    // Transparent on the left, opaque on the right.
    const QImage halves = Painted({ 1024, 512 }, QImage::Format_ARGB32,
        [](int x, int) { return x < 512 ? qRgba(0, 0, 0, 0) : qRgba(10, 200, 30, 255); });
    const QByteArray icon = RenderMainIcon(TRenderSource(halves), TResampleFilter::rfMitchell);
    EXPECT_EQ(icon.first(6), QByteArray("\0\0\1\0\x0A\0", 6));
    for (std::size_t i = 0; i < 10; ++i) {
        const int width = IconSizes[i];
        const int height = width / 2;
        const char* entry = icon.constData() + 6 + 16 * i;
        EXPECT_EQ(static_cast<uchar>(entry[0]), width < 256 ? width : 0);
        EXPECT_EQ(static_cast<uchar>(entry[1]), height < 256 ? height : 0);
        EXPECT_EQ(entry[6], 32) << "bits per pixel";
        const auto size = qFromLittleEndian<quint32>(entry + 8);
        const QByteArray image = icon.mid(qFromLittleEndian<quint32>(entry + 12), size);
        ASSERT_EQ(image.size(), static_cast<qsizetype>(size)) << i;
        if (width >= 256) {
            EXPECT_TRUE(image.startsWith("\x89PNG"));
            EXPECT_EQ(QImage::fromData(image).size(), QSize(width, height));
            continue;
        }
        const qsizetype colorBytes = qsizetype { width } * height * 4;
        const qsizetype maskRowBytes = (width + 31) / 32 * 4;
        ASSERT_EQ(image.size(), 40 + colorBytes + maskRowBytes * height);
        EXPECT_EQ(qFromLittleEndian<qint32>(image.constData() + 4), width);
        EXPECT_EQ(qFromLittleEndian<qint32>(image.constData() + 8), height * 2);
        EXPECT_EQ(image[14], 32) << "bits per pixel";
        // The mask hides the left edge and shows the right edge. The pixels of the right edge are green
        // and opaque.
        const auto maskRow = image.mid(40 + colorBytes, maskRowBytes);
        const auto isHidden = [&maskRow](int x) {
            return (static_cast<uchar>(maskRow[x / 8]) & 0x80 >> x % 8) != 0;
        };
        EXPECT_TRUE(isHidden(0) && isHidden(width / 2 - 3)) << width;
        EXPECT_FALSE(isHidden(width / 2 + 2) || isHidden(width - 1)) << width;
        const QByteArray last = image.mid(40 + qsizetype { width - 1 } * 4, 4);
        EXPECT_EQ(last, QByteArray("\x1E\xC8\x0A\xFF", 4)) << width;
    }
}
