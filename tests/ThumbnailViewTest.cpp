#include "widgets/ThumbnailView.h"
#include "widgets/ThumbnailModel.h"

#include "tests/DialogTesting.h"

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

    // Makes a folder with small pictures of these names, and returns its path.
    QString Folder(const QString& name, const QStringList& files)
    {
        for (const QString& file : files)
            PutFile(Path(name + '/' + file), PngBytes({ 8, 4 }));
        return Path(name);
    }

    // Opens a folder and waits until the view shows `files`.
    void ExpectFilled(const QString& folder, const QStringList& files)
    {
        EXPECT_EQ(FView.Fill(folder), !files.isEmpty());
        EXPECT_TRUE(QTest::qWaitFor([&] { return FView.Count() >= files.size(); }, 60000));
        EXPECT_EQ(Names(&FView), files);
    }

    QVariant Data(int row, int role) const { return FView.model()->index(row, 0).data(role); }

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
    ExpectFilled(folder, { "b.PNG", "C.png", "d.png" });
    const auto size = [this](int row) {
        return Data(row, Qt::DecorationRole).value<QImage>().deviceIndependentSize();
    };
    EXPECT_EQ(Data(1, TThumbnailModel::InfoRole), "8 x 4");
    EXPECT_EQ(size(1), QSizeF(8, 4)) << "not enlarged";
    EXPECT_EQ(Data(2, TThumbnailModel::InfoRole), "3000 x 1000");
    EXPECT_EQ(size(2), QSizeF(160, 53));

    for (const QString& without : { Folder("texts", { "readme.txt" }), Path("missing"), QString() })
        ExpectFilled(without, {});
}

TEST_F(ThumbnailViewTest, StaysResponsiveWhileItFills)
{
    QStringList names;
    for (int i = 0; i < 500; ++i)
        names.append(u"%1.png"_s.arg(i, 3, 10, QLatin1Char('0')));
    const QString folder = Folder("many", names);
    EXPECT_TRUE(FView.Fill(folder));
    EXPECT_EQ(FView.Count(), 1) << "the first is there at once";
    QCoreApplication::processEvents();
    EXPECT_LT(FView.Count(), 500) << "other events have their turn";
    ExpectFilled(Folder("other", { "x.png", "y.png" }), { "x.png", "y.png" });
    ExpectFilled(folder, names);
}

TEST_F(ThumbnailViewTest, AppendsWhatARunWrites)
{
    FView.Fill(Folder("run", { "a.png", "b.png" }));
    FView.Clear();
    QCoreApplication::processEvents();
    EXPECT_EQ(FView.Count(), 0) << "the rest of the folder does not follow";
    FView.Append(Path("run/a.png"));
    FView.Append(Path("run/b.png"), "Max 512 x 512");
    FView.Append(Path("run/missing.png"));
    EXPECT_EQ(Names(&FView), QStringList({ "a.png", "b.png" }));
    EXPECT_EQ(Data(1, TThumbnailModel::InfoRole), "Max 512 x 512");
    FView.SelectFirst();
    EXPECT_EQ(FView.selectionModel()->selectedRows(), QModelIndexList({ FView.model()->index(0, 0) }));
}

TEST_F(ThumbnailViewTest, SpreadsItsColumnsAndNeverTakesTheFocus)
{
    const QStringList files { "1.png", "2.png", "3.png", "4.png", "5.png", "6.png", "7.png" };
    ExpectFilled(Folder("out", files), files);
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

// A screen of another resolution needs other pictures. The model reads the files again, as it does for
// pictures that did not fit into memory.
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
