#include "generate/Catalogue.h"

#include "tests/Testing.h"

#include <QRegularExpression>
#include <QStringList>

using namespace Corvadine;

namespace {

constexpr TPlatforms All { true, true, true, true };
constexpr TPlatforms IPhone { .IPhone = true };
constexpr TPlatforms IPad { .IPad = true };

QStringList List(const TPlatforms& platforms, int twoxSize = 400, QSize launchSize = NoLaunchSize)
{
    QStringList lines;
    for (const TGenRec& record : BuildGenList(platforms, twoxSize, launchSize))
        lines.append(u"%1 %2x%3"_s.arg(record.ID).arg(record.Width).arg(record.Height));
    return lines;
}

} // namespace

TEST(CatalogueTest, ListsEveryPlatformInOrder)
{
    const QStringList list = List(All);
    ASSERT_EQ(list.size(), 37);
    const std::pair<int, const char*> landmarks[] { { 0, "Android_LauncherIcon36 36x36" },
        { 6, "Android_SplashImage426 426x320" }, { 9, "Android_SplashImage960 960x720" },
        { 10, "Android_NotificationIcon24 24x24" }, { 15, "iPhone_AppIcon120 120x120" },
        { 23, "iPad_AppIcon152 152x152" }, { 28, "UWP_DelphiLogo44 44x44" },
        { 30, "iOS_AppStore1024 1024x1024" }, { 32, "iPhone_LaunchDark2x 400x400" },
        { 33, "iPhone_Launch3x 800x800" }, { 35, "iPad_Launch2x 800x800" } };
    for (const auto& [index, text] : landmarks)
        EXPECT_EQ(list[index], text) << index;

    // Every ID contains its size, so this loop finds a wrong number in the table.
    for (const QString& line : list.first(31)) {
        const QString size = line.section(u' ', 1);
        const QString number = line.section(u' ', 0, 0).section(u'_', 1).remove(QRegularExpression("[^0-9]"));
        EXPECT_TRUE(size.startsWith(number + u'x')) << line.toStdString();
    }
}

TEST(CatalogueTest, TakesOnlyTickedPlatforms)
{
    EXPECT_EQ(List({}), QStringList());
    EXPECT_EQ(List({ .Android = true }).size(), 15);
    EXPECT_EQ(List(IPhone).size(), 13);
    EXPECT_EQ(List(IPad).size(), 7);
    EXPECT_EQ(List(IPad).filter("AppStore"), QStringList());
    EXPECT_EQ(
        List({ .Windows = true }), QStringList({ "UWP_DelphiLogo44 44x44", "UWP_DelphiLogo150 150x150" }));
}

TEST(CatalogueTest, LaunchHeightFollowsWidthOverHeightAndIsCutOff)
{
    EXPECT_EQ(List(IPhone, 400, { 1242, 2688 }).last(4),
        QStringList({ "iPhone_Launch2x 400x184", "iPhone_LaunchDark2x 400x184", "iPhone_Launch3x 800x368",
            "iPhone_LaunchDark3x 800x368" }));
    EXPECT_EQ(List(IPad, 750, { 2048, 1536 }).last(), "iPad_LaunchDark2x 1500x2000");
    EXPECT_EQ(List(IPhone, 750, { 1536, 2048 })[9], "iPhone_Launch2x 750x562"); // exactly 562.5, cut off
    EXPECT_EQ(List(IPhone, 400, { 1, 1000 })[9], "iPhone_Launch2x 400x1");      // exactly 0.4, but at least 1
    for (const TGenRec& record : BuildGenList(IPad, 2000000000, { 2000000000, 1 }))
        EXPECT_GT(record.Height, 0) << "overflow";
}
