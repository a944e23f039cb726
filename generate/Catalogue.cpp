#include "generate/Catalogue.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>

namespace Corvadine {

namespace {

struct TFixedRec {
    const char* ID;
    int Width;
    int Height;
};

constexpr std::array<TFixedRec, 15> AndroidGenRecs { {
    { "Android_LauncherIcon36", 36, 36 },
    { "Android_LauncherIcon48", 48, 48 },
    { "Android_LauncherIcon72", 72, 72 },
    { "Android_LauncherIcon96", 96, 96 },
    { "Android_LauncherIcon144", 144, 144 },
    { "Android_LauncherIcon192", 192, 192 },
    { "Android_SplashImage426", 426, 320 },
    { "Android_SplashImage470", 470, 320 },
    { "Android_SplashImage640", 640, 480 },
    { "Android_SplashImage960", 960, 720 },
    { "Android_NotificationIcon24", 24, 24 },
    { "Android_NotificationIcon36", 36, 36 },
    { "Android_NotificationIcon48", 48, 48 },
    { "Android_NotificationIcon72", 72, 72 },
    { "Android_NotificationIcon96", 96, 96 },
} };

constexpr std::array<TFixedRec, 8> IPhoneGenRecs { {
    { "iPhone_AppIcon120", 120, 120 },
    { "iPhone_AppIcon180", 180, 180 },
    { "iPhone_Spotlight80", 80, 80 },
    { "iPhone_Spotlight120", 120, 120 },
    { "iPhone_Setting58", 58, 58 },
    { "iPhone_Setting87", 87, 87 },
    { "iPhone_Notification40", 40, 40 },
    { "iPhone_Notification60", 60, 60 },
} };

// "SpotLight" with a capital L: the IDE spells the iPad's element so.
constexpr std::array<TFixedRec, 5> IPadGenRecs { {
    { "iPad_AppIcon152", 152, 152 },
    { "iPad_AppIcon167", 167, 167 },
    { "iPad_SpotLight80", 80, 80 },
    { "iPad_Setting58", 58, 58 },
    { "iPad_Notification40", 40, 40 },
} };

constexpr std::array<TFixedRec, 2> WindowsGenRecs { {
    { "UWP_DelphiLogo44", 44, 44 },
    { "UWP_DelphiLogo150", 150, 150 },
} };

void AppendFixed(std::vector<TGenRec>& list, std::span<const TFixedRec> records)
{
    for (const TFixedRec& record : records)
        list.push_back({ record.Width, record.Height, QString::fromLatin1(record.ID) });
}

void AppendLaunch(std::vector<TGenRec>& list, QSize size, std::initializer_list<const char*> ids)
{
    for (const char* id : ids)
        list.push_back({ size.width(), size.height(), QString::fromLatin1(id) });
}

// Keeps absurd source shapes inside the type; the renderer refuses sizes that big with a text.
int ToPixels(double value)
{
    constexpr double Most = std::numeric_limits<int>::max() / 2.0;
    return static_cast<int>(std::clamp(value, 1.0, Most));
}

} // namespace

std::vector<TGenRec> BuildGenList(const TPlatforms& platforms, int twoxSize, QSize launchSize)
{
    std::vector<TGenRec> list;
    if (platforms.Android)
        AppendFixed(list, AndroidGenRecs);
    if (platforms.IPhone)
        AppendFixed(list, IPhoneGenRecs);
    if (platforms.IPad)
        AppendFixed(list, IPadGenRecs);
    if (platforms.Windows)
        AppendFixed(list, WindowsGenRecs);

    const double ratio = static_cast<double>(launchSize.width()) / launchSize.height();
    const QSize twox(ToPixels(twoxSize), ToPixels(twoxSize * ratio));
    const QSize doubled = twox * 2; // the "3x" images too are twice the "2x" size
    if (platforms.IPhone) {
        AppendLaunch(list, QSize(1024, 1024), { "iOS_AppStore1024" });
        AppendLaunch(list, twox, { "iPhone_Launch2x", "iPhone_LaunchDark2x" });
        AppendLaunch(list, doubled, { "iPhone_Launch3x", "iPhone_LaunchDark3x" });
    }
    if (platforms.IPad)
        AppendLaunch(list, doubled, { "iPad_Launch2x", "iPad_LaunchDark2x" });
    return list;
}

TGenRec MainIconEntry()
{
    return { 0, 0, MainIconID.toString() };
}

bool IsLaunchEntry(const QString& id)
{
    return id.contains(u"Android_Splash") || id.contains(u"iPhone_Launch") || id.contains(u"iPad_Launch");
}

bool IsAppStoreEntry(const QString& id)
{
    return id.contains(u"iOS_AppStore");
}

} // namespace Corvadine
