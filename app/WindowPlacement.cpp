#include "app/WindowPlacement.h"

#include "app/SettingsFile.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <algorithm>

namespace Corvadine {

namespace {

// Moves `bounds` onto the primary screen if too little of the title bar is visible to drag the window. The
// remembered screen may be gone, and the settings file may contain any numbers.
QRect OnSomeScreen(QRect bounds, QSize smallest)
{
    bounds.setSize(bounds.size().expandedTo(smallest));
    constexpr int Grip = 64;
    const QRect titleBar(bounds.topLeft(), QSize(bounds.width(), Grip));
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect visible = screen->availableGeometry() & titleBar;
        if (visible.width() >= Grip && bounds.top() >= screen->availableGeometry().top()
            && visible.height() >= Grip / 2)
            return bounds;
    }
    const QRect home = QGuiApplication::primaryScreen()->availableGeometry();
    bounds.setSize(bounds.size().boundedTo(home.size()));
    bounds.moveCenter(home.center());
    return bounds;
}

// Gives a window that is not shown yet a size that includes its frame. The margins of the frame are known
// only later. On Windows they are known when the native window exists, and on X11 when the window manager has
// framed the window.
class TFrameFitter : public QObject {
public:
    TFrameFitter(QWidget& window, const QRect& bounds)
        : QObject(&window), FWindow(window), FSize(bounds.size())
    {
        window.move(bounds.topLeft());
        window.resize(FSize);
        window.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == &FWindow && event->type() == QEvent::Show) {
            FWindow.removeEventFilter(this);
            FWindow.windowHandle()->installEventFilter(this);
            Fit();
        } else if (event->type() == QEvent::Expose && watched != &FWindow) {
            Fit();
            deleteLater();
        }
        return false;
    }

private:
    void Fit()
    {
        const QMargins frame = FWindow.windowHandle()->frameMargins();
        if (!FWindow.isMaximized() && !FWindow.isMinimized())
            FWindow.resize(FSize.shrunkBy(frame));
    }

    QWidget& FWindow;
    const QSize FSize;
};

} // namespace

TWindowPlacement ReadPlacement(const TSettingsFile& settings)
{
    const int state = settings.Integer("WindowsState", TWindowPlacement::Maximized);
    // The settings file may contain any numbers. Numbers beyond these limits could overflow in QRect.
    constexpr int MostCoordinate = 32767;
    constexpr int MostSide = 16384;
    const auto coordinate = [&](const char* key) {
        return std::clamp(settings.Integer(key, 0), -MostCoordinate, MostCoordinate);
    };
    const auto side = [&](const char* key, int missing) {
        return std::clamp(settings.Integer(key, missing), 1, MostSide);
    };
    return { state,
        QRect(coordinate("ScreenLeft"), coordinate("ScreenTop"), side("ScreenWidth", 1024),
            side("ScreenHeight", 768)) };
}

void WritePlacement(TSettingsFile& settings, const TWindowPlacement& placement)
{
    settings.SetInteger("WindowsState", placement.State);
    settings.SetInteger("ScreenLeft", placement.Bounds.left());
    settings.SetInteger("ScreenTop", placement.Bounds.top());
    settings.SetInteger("ScreenWidth", placement.Bounds.width());
    settings.SetInteger("ScreenHeight", placement.Bounds.height());
}

TWindowPlacement PlacementOf(const QWidget& window)
{
    const int state = window.isMinimized() ? TWindowPlacement::Minimized
        : window.isMaximized()             ? TWindowPlacement::Maximized
                                           : TWindowPlacement::Normal;
    return { state, QRect(window.pos(), window.frameGeometry().size()) };
}

void Place(QWidget& window, const TWindowPlacement& placement)
{
    if (placement.State == TWindowPlacement::Minimized || placement.State == TWindowPlacement::Maximized)
        window.setWindowState(window.windowState() | Qt::WindowMaximized);
    else
        new TFrameFitter(window, OnSomeScreen(placement.Bounds, window.minimumSizeHint()));
}

void Center(QWidget& window)
{
    const QRect home = QGuiApplication::primaryScreen()->availableGeometry();
    const QPoint corner = home.center() - window.rect().center();
    window.move(std::max(corner.x(), home.left()), std::max(corner.y(), home.top()));
}

} // namespace Corvadine
