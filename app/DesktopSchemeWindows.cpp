#include "app/DesktopScheme.h"

#include <QGuiApplication>
#include <QPlatformSurfaceEvent>
#include <QSettings>
#include <QWindow>

#include <qt_windows.h>

#include <dwmapi.h>

namespace Corvadine {

namespace {

// Sees each window of the system when it has been made and is not yet shown.
class TFrameDarkener : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::PlatformSurface
            && static_cast<QPlatformSurfaceEvent*>(event)->surfaceEventType()
                == QPlatformSurfaceEvent::SurfaceCreated)
            if (const auto* window = qobject_cast<QWindow*>(object); window && window->isTopLevel())
                Darken(reinterpret_cast<HWND>(window->winId()));
        return QObject::eventFilter(object, event);
    }

private:
    static void Darken(HWND window)
    {
        constexpr DWORD UseImmersiveDarkMode = 20; // DWMWA_..., which older headers do not have
        const BOOL isDark = TRUE;
        ::DwmSetWindowAttribute(window, UseImmersiveDarkMode, &isDark, sizeof isDark); // older systems refuse
    }
};

} // namespace

std::optional<bool> DesktopPrefersDark()
{
    const QSettings personalize(
        QStringLiteral(
            "HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize"),
        QSettings::NativeFormat);
    const QVariant light = personalize.value(QStringLiteral("AppsUseLightTheme"));
    return light.isValid() ? std::optional(light.toInt() == 0) : std::nullopt;
}

void DarkenFrames(QGuiApplication& application)
{
    application.installEventFilter(new TFrameDarkener(&application));
}

} // namespace Corvadine
