#include "generate/IcoWriter.h"
#include "generate/Rendering.h"
#include "tests/ImageTesting.h"
#include "tests/Testing.h"

#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QtEndian>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

// Transparent on the left, opaque on the right.
QImage HalfTransparent(QSize size)
{
    return Painted(size, QImage::Format_ARGB32,
        [size](int x, int) { return x < size.width() / 2 ? qRgba(0, 0, 0, 0) : qRgba(10, 200, 30, 255); });
}

QByteArray IconOf(const QImage& source)
{
    return RenderMainIcon(TRenderSource(source), TResampleFilter::rfMitchell);
}

} // namespace

class MainIconTest : public TFolderTest {
protected:
    // The sizes that icotool finds in the icon of a source.
    std::string ListedByIcotool(QSize source) const
    {
        PutFile(Path("a.ico"), IconOf(HalfTransparent(source)));
        QProcess icotool;
        icotool.start("icotool", { "-l", Path("a.ico") });
        icotool.waitForFinished();
        EXPECT_EQ(icotool.exitCode(), 0) << icotool.readAllStandardError().toStdString();
        static const QRegularExpression Line("[^\n]*--width=(\\d+) --height=(\\d+) --bit-depth=32[^\n]*\n");
        return QString::fromUtf8(icotool.readAllStandardOutput()).replace(Line, "\\1x\\2 ").toStdString();
    }
};

TEST_F(MainIconTest, AnotherProgramFindsTenImagesInOrder)
{
    if (QStandardPaths::findExecutable("icotool").isEmpty())
        GTEST_SKIP() << "icotool (icoutils) is not installed";
    EXPECT_EQ(
        ListedByIcotool({ 640, 640 }), "16x16 24x24 32x32 48x48 64x64 72x72 96x96 128x128 256x256 512x512 ");
    EXPECT_EQ(
        ListedByIcotool({ 1024, 512 }), "16x8 24x12 32x16 48x24 64x32 72x36 96x48 128x64 256x128 512x256 ");
}

TEST_F(MainIconTest, SmallImagesAreBitmapsWithAMaskAndLargeOnesPng)
{
    const QByteArray icon = IconOf(HalfTransparent({ 640, 640 }));
    for (int i = 0; i < 10; ++i) {
        const char* entry = icon.constData() + 6 + 16 * i;
        const auto size = qFromLittleEndian<quint32>(entry + 8);
        const auto offset = qFromLittleEndian<quint32>(entry + 12);
        const QByteArray image = icon.mid(offset, size);
        ASSERT_EQ(image.size(), static_cast<qsizetype>(size)) << i;
        const int side = IconSizes[static_cast<std::size_t>(i)];
        EXPECT_EQ(static_cast<uchar>(entry[0]), side < 256 ? side : 0);
        if (side >= 256) {
            EXPECT_TRUE(image.startsWith("\x89PNG"));
            EXPECT_EQ(QImage::fromData(image).size(), QSize(side, side));
            continue;
        }
        const qsizetype colorBytes = qsizetype { side } * side * 4;
        const qsizetype maskRowBytes = (side + 31) / 32 * 4;
        ASSERT_EQ(image.size(), 40 + colorBytes + maskRowBytes * side);
        EXPECT_EQ(qFromLittleEndian<qint32>(image.constData() + 8), side * 2);
        // The mask hides the left edge and shows the right one, whose pixels are green and opaque.
        const auto maskRow = image.mid(40 + colorBytes, maskRowBytes);
        const auto isHidden = [&maskRow](int x) {
            return (static_cast<uchar>(maskRow[x / 8]) & 0x80 >> x % 8) != 0;
        };
        EXPECT_TRUE(isHidden(0) && isHidden(side / 2 - 3)) << side;
        EXPECT_FALSE(isHidden(side / 2 + 2) || isHidden(side - 1)) << side;
        const QByteArray last = image.mid(40 + qsizetype { side - 1 } * 4, 4);
        EXPECT_EQ(last, QByteArray("\x1E\xC8\x0A\xFF", 4)) << side;
    }
}
