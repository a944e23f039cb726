#include "images/ColorPicker.h"
#include "images/ImageView.h"

#include "tests/WidgetTesting.h"

#include <QHBoxLayout>
#include <QSignalSpy>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

constexpr int IconColor = 0x302010;

// Both views side by side, as in the window: a tall icon of one colour, and a launch image of another.
class ColorPickerTest : public TFolderTest {
protected:
    void SetUp() override
    {
        auto* const row = new QHBoxLayout(&FWindow);
        for (TImageView* view : { FIcon, FLaunch }) {
            view->setFixedSize(view->sizeHint());
            row->addWidget(view);
        }
        Show(*FIcon, { 100, 400 }, QColor(0x10, 0x20, 0x30));
        Show(*FLaunch, { 64, 64 }, Qt::green);
        FWindow.show();
    }

    void Show(TImageView& view, QSize size, const QColor& color)
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(color);
        ASSERT_TRUE(image.save(Path("image.png")));
        view.Load(Path("image.png"), TDecoderChoice::ByContent);
    }

    QWidget FWindow;
    TImageView* FIcon = new TImageView(&FWindow);
    TImageView* FLaunch = new TImageView(&FWindow);
    TColorPicker FPicker { FIcon, FLaunch, &FWindow };
    QSignalSpy FPreviewed { &FPicker, &TColorPicker::Previewed };
    QSignalSpy FPicked { &FPicker, &TColorPicker::Picked };
    QSignalSpy FEnded { &FPicker, &TColorPicker::PickModeEnded };

    const QPoint FMiddle { 115, 115 };
    const QPoint FIconMargin { 20, 115 };
};

} // namespace

TEST_F(ColorPickerTest, PreviewsAndPicksFromTheIconWhicheverViewIsUnderThePointer)
{
    struct TCase {
        TImageView* View;
        Qt::MouseButton Button;
        QPoint Position;
        int Color;
    };
    for (const TCase& test : { TCase { FIcon, Qt::LeftButton, FMiddle, IconColor },
             TCase { FLaunch, Qt::LeftButton, FMiddle, IconColor },
             TCase { FIcon, Qt::RightButton, FMiddle, IconColor },
             TCase { FIcon, Qt::LeftButton, FIconMargin, -1 },
             TCase { FLaunch, Qt::MiddleButton, FIconMargin, -1 } }) {
        FPreviewed.clear();
        FPicked.clear();
        FEnded.clear();
        FPicker.SetPickMode(true);
        EXPECT_EQ(FIcon->cursor().shape(), Qt::PointingHandCursor);
        QTest::mouseMove(test.View, test.Position);
        ASSERT_FALSE(FPreviewed.isEmpty());
        EXPECT_EQ(FPreviewed.last(), QVariantList({ test.Color }));
        EXPECT_TRUE(FPicked.isEmpty());

        QTest::mouseClick(test.View, test.Button, {}, test.Position);
        EXPECT_EQ(FPicked, QList<QVariantList>({ { test.Color } }));
        EXPECT_EQ(FEnded.count(), 1);
        EXPECT_FALSE(FPicker.PickMode());
        EXPECT_FALSE(FIcon->testAttribute(Qt::WA_SetCursor)) << "the default cursor again";
    }
}

TEST_F(ColorPickerTest, DoesNothingOutsidePickMode)
{
    QTest::mouseMove(FIcon, FMiddle);
    QTest::mouseClick(FIcon, Qt::LeftButton, {}, FMiddle);
    FPicker.SetPickMode(true);
    FPicker.SetPickMode(false);
    QTest::mouseMove(FLaunch, FMiddle);
    QTest::mouseClick(FLaunch, Qt::LeftButton, {}, FMiddle);
    EXPECT_TRUE(FPreviewed.isEmpty());
    EXPECT_TRUE(FPicked.isEmpty());
    EXPECT_TRUE(FEnded.isEmpty());
    EXPECT_EQ(FIcon->cursor().shape(), Qt::PointingHandCursor) << "stays when the button is released by hand";
    EXPECT_EQ(FWindow.cursor().shape(), Qt::ArrowCursor);
}

TEST_F(ColorPickerTest, EndsPickModeBeforeItTellsTheColor)
{
    QStringList order;
    QObject::connect(&FPicker, &TColorPicker::PickModeEnded, [&] { order << "ended"; });
    QObject::connect(
        &FPicker, &TColorPicker::Picked, [&] { order << (FPicker.PickMode() ? "armed" : "picked"); });
    FIcon->Clear();
    FPicker.SetPickMode(true);
    QTest::mouseClick(FLaunch, Qt::LeftButton, {}, FIconMargin);
    EXPECT_EQ(order, QStringList({ "ended", "picked" }));
    EXPECT_EQ(FPicked, QList<QVariantList>({ { 0xffffff } })) << "the blank pixel of an empty view fills it";
}
