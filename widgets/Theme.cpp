#include "widgets/Theme.h"

#include "base/Literals.h"
#include "widgets/DesktopScheme.h"
#include "widgets/ThemeStyle.h"

#include <QApplication>
#include <QFont>

#include <algorithm>
#include <array>
#include <cmath>

namespace Corvadine {

namespace {

struct TScheme {
    QRgb Window, Base, AlternateBase, Button, Text, Placeholder, Disabled, Highlight, HighlightedText, Link;
};

constexpr TScheme LightScheme { 0xFFF1F1F3, 0xFFFFFFFF, 0xFFF7F7F9, 0xFFF6F6F8, 0xFF1B1B1F, 0xFF6B6B73,
    0xFFA0A0A6, 0xFF5B4BC4, 0xFFFFFFFF, 0xFF4A3AB8 };
constexpr TScheme DarkScheme { 0xFF2B2B2F, 0xFF1E1E21, 0xFF26262A, 0xFF39393E, 0xFFEDEDF0, 0xFF9A9AA2,
    0xFF77777E, 0xFF6F5FD8, 0xFFFFFFFF, 0xFFA99BFF };

QPalette PaletteOf(const TScheme& scheme)
{
    // QPalette derives the shades of frames from these two colors.
    QPalette palette { QColor(scheme.Button), QColor(scheme.Window) };
    for (const auto role :
        { QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText }) {
        palette.setColor(role, QColor(scheme.Text));
        palette.setColor(QPalette::Disabled, role, QColor(scheme.Disabled));
    }
    palette.setColor(QPalette::Window, QColor(scheme.Window));
    palette.setColor(QPalette::Base, QColor(scheme.Base));
    palette.setColor(QPalette::Disabled, QPalette::Base, QColor(scheme.Window));
    palette.setColor(QPalette::AlternateBase, QColor(scheme.AlternateBase));
    palette.setColor(QPalette::Button, QColor(scheme.Button));
    palette.setColor(QPalette::ToolTipBase, QColor(scheme.AlternateBase));
    palette.setColor(QPalette::PlaceholderText, QColor(scheme.Placeholder));
    palette.setColor(QPalette::Highlight, QColor(scheme.Highlight));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(scheme.Disabled));
    palette.setColor(QPalette::HighlightedText, QColor(scheme.HighlightedText));
    palette.setColor(QPalette::Link, QColor(scheme.Link));
    palette.setColor(QPalette::BrightText, QColor(scheme.HighlightedText));
    return palette;
}

} // namespace

TTheme ThemeOfEnvironment()
{
    const QByteArray wish = qgetenv("CORVADINE_THEME").toLower();
    if (wish == "dark")
        return TTheme::Dark;
    if (wish == "light")
        return TTheme::Light;
    if (DesktopPrefersDark().value_or(false))
        return TTheme::Dark;
    const QByteArray gtkTheme = qgetenv("GTK_THEME").toLower();
    return gtkTheme.endsWith(":dark") || gtkTheme.endsWith("-dark") ? TTheme::Dark : TTheme::Auto;
}

void ApplyTheme(QApplication& application, TTheme theme)
{
    QApplication::setStyle(new TThemeStyle);
    if (theme != TTheme::Auto)
        QApplication::setPalette(PaletteOf(theme == TTheme::Dark ? DarkScheme : LightScheme));
    if (theme == TTheme::Dark)
        DarkenFrames(application);
    QFont font = application.font();
    font.setFamilies({ u"Tahoma"_s, font.family() });
    QApplication::setFont(font);
}

bool IsDark(const QPalette& palette)
{
    return palette.color(QPalette::WindowText).lightness() > palette.color(QPalette::Window).lightness();
}

QColor ContentColor(const QPalette& palette)
{
    return palette.color(QPalette::Base);
}

double Contrast(const QColor& one, const QColor& other)
{
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    const auto luminance = [linear](const QColor& color) {
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
            + 0.0722 * linear(color.blueF());
    };
    const auto [darker, lighter] = std::minmax({ luminance(one), luminance(other) });
    return (lighter + 0.05) / (darker + 0.05);
}

QColor FrameColor(const QPalette& palette)
{
    constexpr double Strength = 0.35; // the share of the text's color
    return Mix(
        palette.color(QPalette::Window), palette.color(QPalette::Active, QPalette::WindowText), Strength);
}

QColor FocusColor(const QPalette& palette)
{
    constexpr double Least = 3.2; // a little more than 3, because smooth edges lose some of it
    constexpr int Steps = 10;
    const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight);
    const QColor text = palette.color(QPalette::Active, QPalette::WindowText);
    constexpr int Lighter = 150; // in percent: Fusion draws the upper halves of buttons lighter
    const std::array grounds { palette.color(QPalette::Active, QPalette::Window),
        palette.color(QPalette::Active, QPalette::Base),
        palette.color(QPalette::Active, QPalette::Button).lighter(Lighter) };
    for (int step = 0; step < Steps; ++step) {
        const QColor color = Mix(highlight, text, double(step) / Steps);
        if (std::ranges::all_of(
                grounds, [&color](const QColor& ground) { return Contrast(color, ground) >= Least; }))
            return color;
    }
    return text;
}

QColor Mix(const QColor& under, const QColor& over, double share)
{
    const auto channel = [share](int from, int to) { return qRound(from + (to - from) * share); };
    return { channel(under.red(), over.red()), channel(under.green(), over.green()),
        channel(under.blue(), over.blue()) };
}

} // namespace Corvadine
