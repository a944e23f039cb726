#include "widgets/ImageView.h"

#include "tests/ImageTesting.h"
#include "tests/WidgetTesting.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QSignalSpy>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

constexpr int Red = 0x0000ff;
constexpr int Blue = 0xff0000;

class ImageViewTest : public TFolderTest {
protected:
    ImageViewTest() { FView.resize(FView.sizeHint()); }

    // Shows a picture in the view. The left half is red. The right half is blue and half transparent.
    void ShowHalves(QSize size)
    {
        const QImage image = Painted(size, QImage::Format_ARGB32,
            [size](int x, int) { return x < size.width() / 2 ? qRgb(255, 0, 0) : qRgba(0, 0, 255, 128); });
        ASSERT_TRUE(image.save(Path("halves.png")));
        FView.Load(Path("halves.png"));
        ASSERT_EQ(FView.Image(), image);
    }

    // Drags `urls` onto the view and drops them if it accepts them. Offers to copy or to move, as file
    // managers do. Returns the action that the view took, or Qt::IgnoreAction if it refused.
    Qt::DropAction Drop(const QList<QUrl>& urls, Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction)
    {
        QMimeData data;
        data.setUrls(urls);
        const auto send = [&](auto event) {
            event.ignore(); // as the application does before it asks the widget
            QApplication::sendEvent(&FView, &event);
            return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
        };
        const QPoint middle = FView.rect().center();
        if (send(QDragEnterEvent(middle, offered, &data, Qt::LeftButton, Qt::NoModifier)) == Qt::IgnoreAction)
            return Qt::IgnoreAction;
        return send(QDropEvent(middle, offered, &data, Qt::LeftButton, Qt::NoModifier));
    }

    TImageView FView;
};

} // namespace

TEST_F(ImageViewTest, FindsThePixelUnderThePointer)
{
    ShowHalves({ 460, 920 }); // fitted to 115 x 230, 57 pixels from the left
    EXPECT_EQ(FView.ColorAt(57, 0), Red);
    EXPECT_EQ(FView.ColorAt(171, 229), Blue);
    EXPECT_EQ(FView.ColorAt(56, 115), -1);
    EXPECT_EQ(FView.ColorAt(172, 115), -1);

    ShowHalves({ 4, 2 }); // enlarged to 230 x 115, 57 pixels from the top
    EXPECT_EQ(FView.ColorAt(57, 56), -1) << "less than a pixel above";
    EXPECT_EQ(FView.ColorAt(114, 115), Red);
    EXPECT_EQ(FView.ColorAt(115, 115), Blue);

    // Each pixel of the view shows 10 x 10 pixels of the picture. ColorAt() takes the one at the center.
    const QImage blocks = Painted({ 2300, 2300 }, QImage::Format_RGB32,
        [](int x, int y) { return x % 10 == 5 && y % 10 == 5 ? qRgb(255, 0, 0) : qRgb(0, 0, 255); });
    ASSERT_TRUE(blocks.save(Path("blocks.png")));
    FView.Load(Path("blocks.png"));
    for (const QPoint point : { QPoint(0, 0), { 3, 100 }, { 229, 229 } })
        EXPECT_EQ(FView.ColorAt(point.x(), point.y()), Red);

    ShowHalves({ 2000, 1 }); // so flat that the fitted height rounds to zero
    EXPECT_EQ(FView.ColorAt(10, 114), Red);
    EXPECT_EQ(FView.ColorAt(10, 113), -1);
}

// CTest runs this test at the scales 1.5 and 2 as well.
TEST_F(ImageViewTest, PicksThePixelUnderThePointerAtEveryScale)
{
    QWidget window;
    TImageView view(&window);
    const QPointF place(8, 4); // whole device pixels at each scale
    view.move(place.toPoint());
    view.resize(view.sizeHint());
    window.resize(300, 300);
    window.show();
    const double ratio = view.devicePixelRatioF();
    const int side = qRound(view.width() * ratio);
    // The middle of the image has other colors than the last row and the last column.
    const QImage image = Painted({ side, side }, QImage::Format_RGB32, [side](int x, int y) {
        return x == side - 1 || y == side - 1 ? qRgb(255, 0, 0) : qRgb(x % 256, y % 256, 0);
    });
    ASSERT_TRUE(image.save(Path("pixels.png")));
    view.Load(Path("pixels.png"));

    QSignalSpy moved(&view, &TImageView::MouseMoved);
    QSignalSpy pressed(&view, &TImageView::MousePressed);
    for (const QPoint pixel :
        { QPoint(0, 0), { 1, 2 }, { 2, 1 }, { 100, 101 }, { 101, 100 }, { side * 3 / 4, 7 },
            { side - 2, side - 2 }, { side - 2, 3 }, { 3, side - 1 }, { side - 1, side - 1 } }) {
        SCOPED_TRACE(::testing::Message() << pixel.x() << ", " << pixel.y() << " at " << ratio);
        const QPointF local = place + QPointF(pixel) / ratio;
        for (const auto& [spy, type] :
            { std::pair(&moved, QEvent::MouseMove), { &pressed, QEvent::MouseButtonPress } }) {
            const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
            qt_handleMouseEvent(
                window.windowHandle(), local, window.mapToGlobal(local), button, button, type, {}, 0);
            ASSERT_EQ(spy->count(), 1);
            const QVariantList at = spy->takeFirst();
            const QRgb color = image.pixel(pixel);
            EXPECT_EQ(view.ColorAt(at[0].toInt(), at[1].toInt()), qRed(color) | qGreen(color) << 8);
        }
    }
}

TEST_F(ImageViewTest, ShowsAReadableFileOverItsContentColor)
{
    PutFile(Path("broken.png"), "no picture");
    for (const char* name : { "broken.png", "missing.png", "" }) {
        ShowHalves({ 8, 8 });
        EXPECT_EQ(FView.accessibleDescription(), "halves.png, 8 x 8");
        FView.Load(Path(name));
        EXPECT_TRUE(FView.IsEmpty());
        EXPECT_EQ(FView.grab().toImage().pixelColor(115, 115), FView.palette().color(QPalette::Base));
        EXPECT_EQ(FView.accessibleDescription(), QString());
        EXPECT_EQ(FView.Image(), BlankSourceImage());
        EXPECT_EQ(FView.ColorAt(10, 10), 0xffffff);
    }

    ShowHalves({ 2000, 1000 });
    FView.SetContentColor(Qt::green);
    QImage shown = FView.grab().toImage();
    EXPECT_EQ(shown.pixelColor(115, 20), QColor(Qt::green));
    EXPECT_EQ(shown.pixelColor(50, 115), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(180, 115), QColor(0, 127, 128)) << "blended";

    FView.resize(100, 300);
    shown = FView.grab().toImage();
    EXPECT_EQ(shown.pixelColor(20, 126), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(20, 124), QColor(Qt::green)) << "fitted again";
}

TEST_F(ImageViewTest, TakesOneImageDroppedOnIt)
{
    for (const char* name : { "a.PNG", "b.jpg", "c.txt" })
        PutFile(Path(name), "bytes");
    const auto urlOf = [this](const char* name) { return QUrl::fromLocalFile(Path(name)); };
    QSignalSpy dropped(&FView, &TImageView::FileDropped);

    EXPECT_EQ(Drop({ urlOf("a.PNG") }), Qt::CopyAction) << "the file must stay where it is";
    ASSERT_EQ(dropped.count(), 1);
    EXPECT_EQ(dropped.first().first().toString(), Path("a.PNG"));
    EXPECT_TRUE(FView.IsEmpty()) << "what is shown is for the owner to decide";
    for (const char* unread : { "a.svg", "a.HEIC", "a.avif" }) {
        PutFile(Path(unread), "bytes");
        EXPECT_EQ(Drop({ urlOf(unread) }), Qt::CopyAction) << "the owner tells why it is not read";
        EXPECT_EQ(dropped.takeLast().first().toString(), Path(unread));
    }

    PutFile(Path("folder.png/file"), {});
    for (const QList<QUrl>& refused : { QList<QUrl> { urlOf("c.txt") }, { urlOf("a.PNG"), urlOf("b.jpg") },
             { urlOf("folder.png") }, { urlOf("missing.png") }, { QUrl("https://example.com/a.png") }, {} })
        EXPECT_EQ(Drop(refused), Qt::IgnoreAction);
    EXPECT_EQ(Drop({ urlOf("a.PNG") }, Qt::MoveAction), Qt::IgnoreAction) << "no copy is offered";
    EXPECT_EQ(dropped.count(), 1);
}
