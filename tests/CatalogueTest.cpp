#include "generate/Catalogue.h"

#include "tests/Testing.h"

#include <QRegularExpression>
#include <QStringList>

using namespace Corvadine;

namespace {

constexpr TPlatforms All { true, true, true, true };

QStringList Described(const std::vector<TGenRec>& list)
{
    QStringList lines;
    for (const TGenRec& record : list)
        lines.append(QStringLiteral("%1 %2x%3").arg(record.ID).arg(record.Width).arg(record.Height));
    return lines;
}

QStringList LastLines(const TPlatforms& platforms, int twoxSize, QSize launch, qsizetype count)
{
    return Described(BuildGenList(platforms, twoxSize, launch)).last(count);
}

} // namespace

TEST(CatalogueTest, ListsEveryPlatformInOrder)
{
    const QStringList list = Described(BuildGenList(All, 400, QSize(1, 1)));
    ASSERT_EQ(list.size(), 37);
    const std::pair<int, const char*> landmarks[] { { 0, "Android_LauncherIcon36 36x36" },
        { 6, "Android_SplashImage426 426x320" }, { 9, "Android_SplashImage960 960x720" },
        { 10, "Android_NotificationIcon24 24x24" }, { 15, "iPhone_AppIcon120 120x120" },
        { 23, "iPad_AppIcon152 152x152" }, { 28, "UWP_DelphiLogo44 44x44" },
        { 30, "iOS_AppStore1024 1024x1024" }, { 32, "iPhone_LaunchDark2x 400x400" },
        { 33, "iPhone_Launch3x 800x800" }, { 35, "iPad_Launch2x 800x800" } };
    for (const auto& [index, text] : landmarks)
        EXPECT_EQ(list[index], text) << index;

    // Every name tells its own size, so a wrong number in the tables shows.
    for (const QString& line : list.first(31)) {
        const QString size = line.section(u' ', 1);
        const QString number = line.section(u' ', 0, 0).section(u'_', 1).remove(QRegularExpression("[^0-9]"));
        EXPECT_TRUE(size.startsWith(number + u'x')) << line.toStdString();
    }
}

TEST(CatalogueTest, TakesOnlyTickedPlatforms)
{
    EXPECT_TRUE(BuildGenList({}, 400, QSize(1, 1)).empty());
    EXPECT_EQ(BuildGenList({ .Android = true }, 400, QSize(1, 1)).size(), 15U);
    EXPECT_EQ(BuildGenList({ .IPhone = true }, 400, QSize(1, 1)).size(), 13U);
    EXPECT_EQ(Described(BuildGenList({ .Windows = true }, 400, QSize(1, 1))),
        QStringList({ "UWP_DelphiLogo44 44x44", "UWP_DelphiLogo150 150x150" }));
    const QStringList iPad = Described(BuildGenList({ .IPad = true }, 400, QSize(1, 1)));
    EXPECT_EQ(iPad.size(), 7);
    EXPECT_EQ(iPad.filter("AppStore"), QStringList());
}

TEST(CatalogueTest, LaunchHeightFollowsWidthOverHeightAndIsCutOff)
{
    const TPlatforms iPad { .IPad = true };
    const TPlatforms iPhone { .IPhone = true };
    EXPECT_EQ(LastLines(iPhone, 400, QSize(1242, 2688), 4),
        QStringList({ "iPhone_Launch2x 400x184", "iPhone_LaunchDark2x 400x184", "iPhone_Launch3x 800x368",
            "iPhone_LaunchDark3x 800x368" }));
    EXPECT_EQ(LastLines(iPad, 750, QSize(2048, 1536), 1), QStringList("iPad_LaunchDark2x 1500x2000"));
    EXPECT_EQ(LastLines(iPhone, 750, QSize(1536, 2048), 4).first(), "iPhone_Launch2x 750x562"); // 562.5
    EXPECT_EQ(LastLines(iPhone, 400, QSize(1, 1000), 4).first(), "iPhone_Launch2x 400x1");      // 0.4
    for (const TGenRec& record : BuildGenList(iPad, 2000000000, QSize(2000000000, 1)))
        EXPECT_GT(record.Height, 0) << "overflow";
}
