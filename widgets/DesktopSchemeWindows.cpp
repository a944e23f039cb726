#include "widgets/DesktopScheme.h"

#include "base/Literals.h"

#include <QGuiApplication>
#include <QPlatformSurfaceEvent>
#include <QSettings>
#include <QWindow>

#include <qt_windows.h>

#include <dwmapi.h>

namespace Corvadine {

namespace {

// Darkens each window after the system has made it and before it is shown.
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
        constexpr DWORD UseImmersiveDarkMode = 20; // DWMWA_USE_IMMERSIVE_DARK_MODE; older headers lack it
        const BOOL isDark = TRUE;
        ::DwmSetWindowAttribute(
            window, UseImmersiveDarkMode, &isDark, sizeof isDark); // older systems fail and keep light frames
    }
};

} // namespace

std::optional<bool> DesktopPrefersDark()
{
    const QSettings personalize(
        u"HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize"_s,
        QSettings::NativeFormat);
    const QVariant light = personalize.value(u"AppsUseLightTheme"_s);
    return light.isValid() ? std::optional(light.toInt() == 0) : std::nullopt;
}

void DarkenFrames(QGuiApplication& application)
{
    application.installEventFilter(new TFrameDarkener(&application));
}

} // namespace Corvadine
