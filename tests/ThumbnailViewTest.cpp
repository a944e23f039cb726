#include "images/ThumbnailView.h"
#include "images/ThumbnailModel.h"

#include "tests/WidgetTesting.h"

#include <QAbstractItemModelTester>
#include <QBuffer>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

QByteArray PngBytes(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::blue);
    QBuffer buffer;
    image.save(&buffer, "png");
    return buffer.data();
}

class ThumbnailViewTest : public TFolderTest {
protected:
    ThumbnailViewTest()
    {
        FView.resize(500, 400);
        FView.show();
    }

    // A folder with small pictures of these names.
    QString Folder(const QString& name, const QStringList& files)
    {
        for (const QString& file : files)
            PutFile(Path(name + '/' + file), PngBytes({ 8, 4 }));
        return Path(name);
    }

    // Opens a folder and waits until all of its files are there.
    bool FillToTheEnd(const QString& folder)
    {
        const bool hasImages = FView.Fill(folder);
        EXPECT_TRUE(QTest::qWaitFor([this] { return !FView.IsFilling(); }, 60000));
        return hasImages;
    }

    QStringList Infos() const
    {
        QStringList infos;
        for (int row = 0; row < FView.Count(); ++row)
            infos.append(FView.model()->index(row, 0).data(TThumbnailModel::InfoRole).toString());
        return infos;
    }

    TThumbnailView FView;
    QAbstractItemModelTester FTester { FView.model(), QAbstractItemModelTester::FailureReportingMode::Fatal };
};

} // namespace

TEST_F(ThumbnailViewTest, ShowsTheImagesOfAFolderByNameAndLeavesOutTheRest)
{
    const QString folder = Folder("out", { "b.PNG", "C.png", ".hidden.png", "e.txt" });
    Folder("out/inner.png", { "d.png" });
    PutFile(Path("out/a.png"), "broken");
    PutFile(Path("out/aa.png"), PngBytes({ 3000, 1000 }).chopped(200));
    PutFile(Path("out/d.png"), PngBytes({ 3000, 1000 }));
    EXPECT_TRUE(FillToTheEnd(folder));
    EXPECT_EQ(FView.FileNames(), QStringList({ "b.PNG", "C.png", "d.png" }));
    EXPECT_EQ(Infos(), QStringList({ "8 x 4", "8 x 4", "3000 x 1000" }));

    const QImage small = FView.model()->index(0, 0).data(Qt::DecorationRole).value<QImage>();
    const QImage large = FView.model()->index(2, 0).data(Qt::DecorationRole).value<QImage>();
    EXPECT_EQ(small.deviceIndependentSize(), QSizeF(8, 4)) << "not enlarged";
    EXPECT_EQ(large.deviceIndependentSize(), QSizeF(160, 53));

    EXPECT_FALSE(FillToTheEnd(Folder("texts", { "readme.txt" })));
    EXPECT_FALSE(FillToTheEnd(Path("missing")));
    EXPECT_FALSE(FillToTheEnd({}));
    EXPECT_EQ(FView.Count(), 0);
}

TEST_F(ThumbnailViewTest, StaysResponsiveWhileItFills)
{
    QStringList names;
    for (int i = 0; i < 500; ++i)
        names.append(QStringLiteral("%1.png").arg(i, 3, 10, QLatin1Char('0')));
    const QString folder = Folder("many", names);
    EXPECT_TRUE(FView.Fill(folder));
    EXPECT_EQ(FView.Count(), 1) << "the first is there at once";
    int turns = 0;
    for (; FView.IsFilling(); ++turns)
        QCoreApplication::processEvents();
    EXPECT_GT(turns, 1) << "other events had their turn";
    EXPECT_EQ(FView.FileNames(), names);
}

TEST_F(ThumbnailViewTest, ForgetsTheOldFolderWhenClearedOrFilledAgain)
{
    const QString old = Folder("old", { "1.png", "2.png", "3.png" });
    const QString other = Folder("other", { "x.png", "y.png" });
    FView.Fill(old);
    EXPECT_TRUE(FillToTheEnd(other));
    EXPECT_EQ(FView.FileNames(), QStringList({ "x.png", "y.png" }));

    FView.Fill(old);
    FView.Clear();
    EXPECT_FALSE(FView.IsFilling());
    FView.Append(Path("other/y.png"));
    QCoreApplication::processEvents();
    EXPECT_EQ(FView.FileNames(), QStringList({ "y.png" }));
}

TEST_F(ThumbnailViewTest, AppendsWhatARunWrites)
{
    FView.SelectFirst();
    EXPECT_FALSE(FView.currentIndex().isValid());
    Folder("run", { "a.png", "b.png" });
    FView.Append(Path("run/a.png"));
    FView.Append(Path("run/b.png"), "Max 512 x 512");
    FView.Append(Path("run/missing.png"));
    EXPECT_EQ(FView.FileNames(), QStringList({ "a.png", "b.png" }));
    EXPECT_EQ(Infos(), QStringList({ "8 x 4", "Max 512 x 512" }));
    FView.SelectFirst();
    EXPECT_EQ(FView.selectionModel()->selectedRows(), QModelIndexList({ FView.model()->index(0, 0) }));
}

TEST_F(ThumbnailViewTest, SpreadsItsColumnsAndNeverTakesTheFocus)
{
    ASSERT_TRUE(
        FillToTheEnd(Folder("out", { "1.png", "2.png", "3.png", "4.png", "5.png", "6.png", "7.png" })));
    const auto columns = [this] {
        QCoreApplication::processEvents();
        QSet<int> lefts;
        int right = 0;
        for (int row = 0; row < FView.Count(); ++row) {
            const QRect cell = FView.visualRect(FView.model()->index(row, 0));
            lefts.insert(cell.left());
            right = std::max(right, cell.right());
        }
        EXPECT_LE(right, FView.viewport()->width());
        EXPECT_GT(right, FView.viewport()->width() - 40) << "the whole width is used";
        return lefts.size();
    };
    for (const auto& [width, expected] :
        { std::pair { 200, 1 }, { 400, 2 }, { 500, 2 }, { 560, 3 }, { 720, 4 } }) {
        FView.resize(width, 400);
        EXPECT_EQ(columns(), expected) << width;
    }
    const QRect second = FView.visualRect(FView.model()->index(1, 0));
    QTest::mouseClick(FView.viewport(), Qt::LeftButton, {}, second.center());
    EXPECT_EQ(FView.currentIndex().row(), 1);
    EXPECT_FALSE(FView.hasFocus() || FView.viewport()->hasFocus());
}

// Where memory is short, the picture of a row is read again; so it is for a screen of another resolution.
TEST_F(ThumbnailViewTest, MakesPicturesAnewForAnotherScreen)
{
    PutFile(Path("out/a.png"), PngBytes({ 1000, 500 }));
    TThumbnailModel model;
    ASSERT_TRUE(model.Append(Path("out/a.png")));
    const auto picture = [&model] { return model.index(0).data(Qt::DecorationRole).value<QImage>(); };
    EXPECT_EQ(picture().size(), QSize(160, 80));
    model.SetPixelRatio(1.5);
    EXPECT_EQ(picture().size(), QSize(240, 120));
    EXPECT_EQ(picture().deviceIndependentSize(), QSizeF(160, 80));
    QFile::remove(Path("out/a.png"));
    model.SetPixelRatio(2);
    EXPECT_TRUE(picture().isNull());
    EXPECT_EQ(model.rowCount(), 1);
}
