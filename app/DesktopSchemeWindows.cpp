#include "app/DesktopScheme.h"

#include <QSettings>

namespace Corvadine {

std::optional<bool> DesktopPrefersDark()
{
    const QSettings personalize(
        QStringLiteral(
            "HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize"),
        QSettings::NativeFormat);
    const QVariant light = personalize.value(QStringLiteral("AppsUseLightTheme"));
    return light.isValid() ? std::optional(light.toInt() == 0) : std::nullopt;
}

} // namespace Corvadine
