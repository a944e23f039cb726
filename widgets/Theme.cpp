#include "widgets/Theme.h"

#include "base/Literals.h"
#include "widgets/DesktopScheme.h"

#include <QApplication>
#include <QFont>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>

#include <algorithm>

namespace Corvadine {

namespace {

// The program uses the style Fusion, because it looks the same on every system and follows the palette.
// Drop-downs open lists rather than menus, because a list can be scrolled and sized.
class TThemeStyle : public QProxyStyle {
public:
    TThemeStyle() : QProxyStyle(u"Fusion"_s) { }

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
        QStyleHintReturn* returnData) const override
    {
        switch (hint) {
        case SH_ComboBox_Popup:
        case SH_ItemView_ActivateItemOnSingleClick: // a single click only selects, on every desktop
            return 0;
        case SH_Slider_AbsoluteSetButtons:
            return Qt::LeftButton; // a click on the groove moves the handle there
        default:
            return QProxyStyle::styleHint(hint, option, widget, returnData);
        }
    }

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget) const override
    {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        // Fusion draws outlines darker than the window, so on a dark window they are hardly visible. Here
        // lighter outlines are drawn over them.
        if ((element == PE_IndicatorCheckBox || element == PE_FrameLineEdit) && IsDark(option->palette)
            && !(option->state & State_HasFocus))
            DrawOutline(QRectF(option->rect), option->palette, *painter);
    }

    // A run repaints its progress after each image. Fusion's rounded gradients would take 2 % of the run.
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget) const override
    {
        const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option);
        const bool isPlain = bar != nullptr && bar->maximum > bar->minimum && (bar->state & State_Horizontal);
        if (isPlain && element == CE_ProgressBarGroove)
            DrawProgressGroove(*bar, *painter);
        else if (isPlain && element == CE_ProgressBarContents)
            painter->fillRect(ProgressArea(*bar), bar->palette.highlight());
        else
            QProxyStyle::drawControl(element, option, painter, widget);
    }

private:
    static void DrawProgressGroove(const QStyleOptionProgressBar& bar, QPainter& painter)
    {
        constexpr double Strength = 0.3; // the share of the text's color in the frame
        painter.fillRect(bar.rect,
            Mix(bar.palette.color(QPalette::Window), bar.palette.color(QPalette::WindowText), Strength));
        painter.fillRect(bar.rect.adjusted(1, 1, -1, -1), bar.palette.base());
    }

    static QRect ProgressArea(const QStyleOptionProgressBar& bar)
    {
        QRect area = bar.rect.adjusted(2, 2, -2, -2);
        const double share = double(bar.progress - bar.minimum) / (bar.maximum - bar.minimum);
        area.setWidth(qRound(area.width() * std::clamp(share, 0.0, 1.0)));
        return QStyle::visualRect(bar.direction, bar.rect, area);
    }

    static void DrawOutline(const QRectF& area, const QPalette& palette, QPainter& painter)
    {
        constexpr double Strength = 0.4; // the share of the text's color in the outline
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Mix(palette.color(QPalette::Window), palette.color(QPalette::WindowText), Strength));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(area.adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
        painter.restore();
    }
};

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

QColor Mix(const QColor& under, const QColor& over, double share)
{
    const auto channel = [share](int from, int to) { return qRound(from + (to - from) * share); };
    return { channel(under.red(), over.red()), channel(under.green(), over.green()),
        channel(under.blue(), over.blue()) };
}

} // namespace Corvadine
