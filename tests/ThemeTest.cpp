#include "tests/MainFormTesting.h"

#include "widgets/CaptionGroup.h"
#include "widgets/Theme.h"

#include <QApplication>
#include <QProgressBar>
#include <QSysInfo>
#include <QWindow>

#include <set>

namespace Corvadine {

namespace {

using namespace Testing;

// The device pixels of a widget in a picture of its window. Corners between two pixels are rounded as Qt
// does.
QRect PlaceOf(const QWidget& widget)
{
    const double ratio = widget.devicePixelRatioF();
    const QRectF place(widget.mapTo(widget.window(), QPoint()), widget.size());
    return { (place.topLeft() * ratio).toPoint(), (place.bottomRight() * ratio).toPoint() - QPoint(1, 1) };
}

// The colors of one line of pixels.
std::set<QRgb> ColorsOf(const QImage& picture, const QRect& line)
{
    std::set<QRgb> colors;
    for (int y = line.top(); y <= line.bottom(); ++y)
        for (int x = line.left(); x <= line.right(); ++x)
            colors.insert(picture.pixel(x, y));
    return colors;
}

class ThemeTest : public TMainFormTest, public ::testing::WithParamInterface<TTheme> {
protected:
    void SetUp() override
    {
        TMainFormTest::SetUp();
        ApplyTheme(*qApp, GetParam());
        Start({ "A" });
        FForm->resize(1008, 729);
        LetIdle();
    }

    QImage Picture() const { return FForm->grab().toImage().convertToFormat(QImage::Format_RGB32); }
};

TEST_P(ThemeTest, FramesAreWholeAndVisibleAtEveryScale)
{
    const QImage picture = Picture();
    const QPalette palette = FForm->palette();
    EXPECT_GE(Contrast(FrameColor(palette), palette.color(QPalette::Window)), 1.5);
    QList<QWidget*> framed { Ui().PB };
    for (auto* group : FForm->findChildren<TCaptionGroup*>())
        framed.append(group);
    ASSERT_EQ(framed.size(), 8);
    for (const QWidget* widget : framed) {
        const QRect place = PlaceOf(*widget);
        for (const QRect& edge : { QRect(place.topLeft(), QSize(place.width(), 1)),
                 QRect(place.bottomLeft(), QSize(place.width(), 1)),
                 QRect(place.topLeft(), QSize(1, place.height())),
                 QRect(place.topRight(), QSize(1, place.height())) })
            EXPECT_EQ(ColorsOf(picture, edge), std::set { FrameColor(palette).rgb() })
                << widget->accessibleName().toStdString();
    }
}

TEST_P(ThemeTest, KeyboardFocusStandsOut)
{
    if (QSysInfo::kernelType() == u"winnt")
        GTEST_SKIP() << "no control shows its focus under Wine";
    std::set<QWidget*> seen;
    QImage before = Picture();
    for (;;) {
        QTest::keyClick(FForm->windowHandle(), Qt::Key_Tab);
        LetIdle();
        const QWidget* focused = QApplication::focusWidget();
        ASSERT_NE(focused, nullptr);
        if (!seen.insert(const_cast<QWidget*>(focused)).second)
            break;
        const QImage picture = Picture();
        const QRect place = PlaceOf(*focused);
        int changed = 0;
        for (int y = place.top(); y <= place.bottom(); ++y)
            for (int x = place.left(); x <= place.right(); ++x)
                changed += Contrast(picture.pixel(x, y), before.pixel(x, y)) >= 3;
        EXPECT_GT(changed, 30) << focused->accessibleName().toStdString();
        before = picture;
    }
    EXPECT_GE(seen.size(), 10U);
}

INSTANTIATE_TEST_SUITE_P(Themes, ThemeTest, ::testing::Values(TTheme::Light, TTheme::Dark),
    [](const auto& given) { return given.param == TTheme::Light ? "Light" : "Dark"; });

} // namespace

} // namespace Corvadine
