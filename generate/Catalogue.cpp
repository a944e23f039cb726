#include "generate/Catalogue.h"

#include "base/Literals.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <span>

namespace Corvadine {

namespace {

using enum TOutputKind;

constexpr auto Android = &TPlatforms::Android;
constexpr auto IPhone = &TPlatforms::IPhone;
constexpr auto IPad = &TPlatforms::IPad;
constexpr auto Windows = &TPlatforms::Windows;

constexpr QStringView MainIconID = u"Icon_MainIcon";

constexpr std::array<TCatalogueEntry, 15> AndroidGenRecs { {
    { Android, Icon, u"Android_LauncherIcon36", { 36, 36 } },
    { Android, Icon, u"Android_LauncherIcon48", { 48, 48 } },
    { Android, Icon, u"Android_LauncherIcon72", { 72, 72 } },
    { Android, Icon, u"Android_LauncherIcon96", { 96, 96 } },
    { Android, Icon, u"Android_LauncherIcon144", { 144, 144 } },
    { Android, Icon, u"Android_LauncherIcon192", { 192, 192 } },
    { Android, Launch, u"Android_SplashImage426", { 426, 320 } },
    { Android, Launch, u"Android_SplashImage470", { 470, 320 } },
    { Android, Launch, u"Android_SplashImage640", { 640, 480 } },
    { Android, Launch, u"Android_SplashImage960", { 960, 720 } },
    { Android, Icon, u"Android_NotificationIcon24", { 24, 24 } },
    { Android, Icon, u"Android_NotificationIcon36", { 36, 36 } },
    { Android, Icon, u"Android_NotificationIcon48", { 48, 48 } },
    { Android, Icon, u"Android_NotificationIcon72", { 72, 72 } },
    { Android, Icon, u"Android_NotificationIcon96", { 96, 96 } },
} };

constexpr std::array<TCatalogueEntry, 8> IPhoneGenRecs { {
    { IPhone, Icon, u"iPhone_AppIcon120", { 120, 120 } },
    { IPhone, Icon, u"iPhone_AppIcon180", { 180, 180 } },
    { IPhone, Icon, u"iPhone_Spotlight80", { 80, 80 } },
    { IPhone, Icon, u"iPhone_Spotlight120", { 120, 120 } },
    { IPhone, Icon, u"iPhone_Setting58", { 58, 58 } },
    { IPhone, Icon, u"iPhone_Setting87", { 87, 87 } },
    { IPhone, Icon, u"iPhone_Notification40", { 40, 40 } },
    { IPhone, Icon, u"iPhone_Notification60", { 60, 60 } },
} };

constexpr std::array<TCatalogueEntry, 5> IPadGenRecs { {
    { IPad, Icon, u"iPad_AppIcon152", { 152, 152 } },
    { IPad, Icon, u"iPad_AppIcon167", { 167, 167 } },
    // The IDE spells the iPad's element with a capital L, unlike the iPhone's "Spotlight".
    { IPad, Icon, u"iPad_SpotLight80", { 80, 80 } },
    { IPad, Icon, u"iPad_Setting58", { 58, 58 } },
    { IPad, Icon, u"iPad_Notification40", { 40, 40 } },
} };

constexpr std::array<TCatalogueEntry, 2> WindowsGenRecs { {
    { Windows, Icon, u"UWP_DelphiLogo44", { 44, 44 } },
    { Windows, Icon, u"UWP_DelphiLogo150", { 150, 150 } },
} };

// The App Store's image and the launch images, whose sizes follow from the "2x Width".
constexpr std::array<TCatalogueEntry, 7> LaunchGenRecs { {
    { IPhone, AppStore, u"iOS_AppStore1024", { 1024, 1024 } },
    { IPhone, Launch, u"iPhone_Launch2x", {}, 1 },
    { IPhone, Launch, u"iPhone_LaunchDark2x", {}, 1 },
    // The "3x" images have twice the size of the "2x" images, not one and a half times.
    { IPhone, Launch, u"iPhone_Launch3x", {}, 2 },
    { IPhone, Launch, u"iPhone_LaunchDark3x", {}, 2 },
    { IPad, Launch, u"iPad_Launch2x", {}, 2 },
    { IPad, Launch, u"iPad_LaunchDark2x", {}, 2 },
} };

constexpr TCatalogueEntry MainIconGenRec { Windows, MainIcon, MainIconID, { 512, 512 } };

// A source of extreme shape gives sizes that do not fit into an int. Such sizes are limited here, so that
// RefuseHuge() can report the fault.
int ToPixels(double value)
{
    constexpr double Most = std::numeric_limits<int>::max() / 2.0;
    return static_cast<int>(std::clamp(value, 1.0, Most));
}

} // namespace

std::vector<TCatalogueEntry> CatalogueOf(const TPlatforms& platforms)
{
    std::vector<TCatalogueEntry> entries;
    const auto append = [&](std::span<const TCatalogueEntry> records) {
        std::copy_if(records.begin(), records.end(), std::back_inserter(entries),
            [&platforms](const TCatalogueEntry& entry) { return platforms.*entry.Platform; });
    };
    append(AndroidGenRecs);
    append(IPhoneGenRecs);
    append(IPadGenRecs);
    append(WindowsGenRecs);
    append(LaunchGenRecs);
    append({ &MainIconGenRec, 1 });
    return entries;
}

QSize BoxOf(const TCatalogueEntry& entry, int twoxSize, QSize launchSize)
{
    if (entry.TwoxFactor == 0)
        return entry.Size;
    const double ratio = static_cast<double>(launchSize.width()) / launchSize.height();
    return QSize(ToPixels(twoxSize), ToPixels(twoxSize * ratio)) * entry.TwoxFactor;
}

std::vector<TGenRec> BuildGenList(const TPlatforms& platforms, int twoxSize, QSize launchSize)
{
    std::vector<TGenRec> list;
    for (const TCatalogueEntry& entry : CatalogueOf(platforms)) {
        const QSize box = BoxOf(entry, twoxSize, launchSize);
        if (entry.Kind != MainIcon)
            list.push_back({ box.width(), box.height(), entry.ID.toString() });
    }
    return list;
}

QString ImageFileName(const QString& id)
{
    return id + (id == MainIconID ? u".ico"_s : u".png"_s);
}

} // namespace Corvadine
