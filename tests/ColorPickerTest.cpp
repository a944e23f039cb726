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
        auto* const row = new QHBoxLayout(&Window);
        for (TImageView* view : { Icon, Launch }) {
            view->setFixedSize(view->sizeHint());
            row->addWidget(view);
        }
        Show(*Icon, { 100, 400 }, QColor(0x10, 0x20, 0x30));
        Show(*Launch, { 64, 64 }, Qt::green);
        Window.show();
    }

    void Show(TImageView& view, QSize size, const QColor& color)
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(color);
        ASSERT_TRUE(image.save(Path("image.png")));
        view.Load(Path("image.png"), TDecoderChoice::ByContent);
    }

    QWidget Window;
    TImageView* Icon = new TImageView(&Window);
    TImageView* Launch = new TImageView(&Window);
    TColorPicker Picker { Icon, Launch, &Window };
    QSignalSpy Previewed { &Picker, &TColorPicker::Previewed };
    QSignalSpy Picked { &Picker, &TColorPicker::Picked };
    QSignalSpy Ended { &Picker, &TColorPicker::PickModeEnded };

    const QPoint Middle { 115, 115 };
    const QPoint IconMargin { 20, 115 };
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
    for (const TCase& test : { TCase { Icon, Qt::LeftButton, Middle, IconColor },
             TCase { Launch, Qt::LeftButton, Middle, IconColor },
             TCase { Icon, Qt::RightButton, Middle, IconColor },
             TCase { Icon, Qt::LeftButton, IconMargin, -1 },
             TCase { Launch, Qt::MiddleButton, IconMargin, -1 } }) {
        Previewed.clear();
        Picked.clear();
        Ended.clear();
        Picker.SetPickMode(true);
        EXPECT_EQ(Icon->cursor().shape(), Qt::PointingHandCursor);
        QTest::mouseMove(test.View, test.Position);
        ASSERT_FALSE(Previewed.isEmpty());
        EXPECT_EQ(Previewed.last(), QVariantList({ test.Color }));
        EXPECT_TRUE(Picked.isEmpty());

        QTest::mouseClick(test.View, test.Button, {}, test.Position);
        EXPECT_EQ(Picked, QList<QVariantList>({ { test.Color } }));
        EXPECT_EQ(Ended.count(), 1);
        EXPECT_FALSE(Picker.PickMode());
        EXPECT_FALSE(Icon->testAttribute(Qt::WA_SetCursor)) << "the default cursor again";
    }
}

TEST_F(ColorPickerTest, DoesNothingOutsidePickMode)
{
    QTest::mouseMove(Icon, Middle);
    QTest::mouseClick(Icon, Qt::LeftButton, {}, Middle);
    Picker.SetPickMode(true);
    Picker.SetPickMode(false);
    QTest::mouseMove(Launch, Middle);
    QTest::mouseClick(Launch, Qt::LeftButton, {}, Middle);
    EXPECT_TRUE(Previewed.isEmpty());
    EXPECT_TRUE(Picked.isEmpty());
    EXPECT_TRUE(Ended.isEmpty());
    EXPECT_EQ(Icon->cursor().shape(), Qt::PointingHandCursor) << "stays when the button is released by hand";
    EXPECT_EQ(Window.cursor().shape(), Qt::ArrowCursor);
}

TEST_F(ColorPickerTest, EndsPickModeBeforeItTellsTheColor)
{
    QStringList order;
    QObject::connect(&Picker, &TColorPicker::PickModeEnded, [&] { order << "ended"; });
    QObject::connect(
        &Picker, &TColorPicker::Picked, [&] { order << (Picker.PickMode() ? "armed" : "picked"); });
    Icon->Clear();
    Picker.SetPickMode(true);
    QTest::mouseClick(Launch, Qt::LeftButton, {}, IconMargin);
    EXPECT_EQ(order, QStringList({ "ended", "picked" }));
    EXPECT_EQ(Picked, QList<QVariantList>({ { 0xffffff } })) << "the blank pixel of an empty view fills it";
}
