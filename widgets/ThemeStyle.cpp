#include "widgets/ThemeStyle.h"

#include "base/Literals.h"
#include "widgets/Theme.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QStyleOption>

#include <algorithm>

namespace Corvadine {

namespace {

// Fills the edge lines of `area`. At scalings such as 150 % the area's edges lie between device pixels. Qt
// rounds them when it clips a widget, so the lines are rounded in the same way. Otherwise the clip would cut
// some off.
void DrawFrame(const QRect& area, const QColor& color, QPainter& painter)
{
    const QTransform toDevice = painter.deviceTransform();
    const QRectF exact = toDevice.mapRect(QRectF(area));
    const QRect frame(exact.topLeft().toPoint(), exact.bottomRight().toPoint() - QPoint(1, 1));
    const int line =
        std::max(1, static_cast<int>(toDevice.m11())); // rounded down, so that no child covers it
    const QTransform fromDevice = toDevice.inverted();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    for (const QRect& edge : { QRect(frame.left(), frame.top(), frame.width(), line),
             QRect(frame.left(), frame.bottom() + 1 - line, frame.width(), line),
             QRect(frame.left(), frame.top(), line, frame.height()),
             QRect(frame.right() + 1 - line, frame.top(), line, frame.height()) })
        painter.fillRect(fromDevice.mapRect(QRectF(edge)), color);
    painter.restore();
}

void DrawOutline(const QRect& area, const QColor& color, double width, QPainter& painter)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, width));
    painter.setBrush(Qt::NoBrush);
    const double inset = width / 2;
    painter.drawRoundedRect(QRectF(area).adjusted(inset, inset, -inset, -inset), 2, 2);
    painter.restore();
}

void DrawFocus(const QRect& area, const QPalette& palette, QPainter& painter)
{
    constexpr double Width = 2;
    DrawOutline(area, FocusColor(palette), Width, painter);
}

void DrawProgressGroove(const QStyleOptionProgressBar& bar, QPainter& painter)
{
    painter.fillRect(bar.rect, bar.palette.base());
    DrawFrame(bar.rect, FrameColor(bar.palette), painter);
}

QRect ProgressArea(const QStyleOptionProgressBar& bar)
{
    QRect area = bar.rect.adjusted(2, 2, -2, -2);
    const double share = double(bar.progress - bar.minimum) / (bar.maximum - bar.minimum);
    area.setWidth(qRound(area.width() * std::clamp(share, 0.0, 1.0)));
    return QStyle::visualRect(bar.direction, bar.rect, area);
}

// Draws a tick below the groove for each tick interval of the slider, whose handle is `length` pixels long.
void DrawTicks(const QStyleOptionSlider& slider, int length, const QColor& color, QPainter& painter)
{
    constexpr int Height = 4;
    const int space = slider.rect.width() - length;
    for (int value = slider.minimum; value <= slider.maximum; value += std::max(1, slider.tickInterval)) {
        const int x = slider.rect.left() + length / 2
            + QStyle::sliderPositionFromValue(
                slider.minimum, slider.maximum, value, space, slider.upsideDown);
        painter.fillRect(x, slider.rect.bottom() - Height, 1, Height, color);
    }
}

// Text fields show the focus however they got it. Fusion shows it in other controls only after a key press.
bool ShowsFocus(const QStyleOption& option)
{
    return option.state.testFlag(QStyle::State_HasFocus)
        && option.state.testFlag(QStyle::State_KeyboardFocusChange);
}

} // namespace

TThemeStyle::TThemeStyle() : QProxyStyle(u"Fusion"_s) { }

int TThemeStyle::styleHint(
    StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* returnData) const
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

void TThemeStyle::drawPrimitive(
    PrimitiveElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    const bool hasFocus = option->state.testFlag(State_HasFocus);
    if (element == PE_Frame) {
        const QPalette& palette = option->palette;
        DrawFrame(option->rect, hasFocus ? FocusColor(palette) : FrameColor(palette), *painter);
        return;
    }
    if (element == PE_FrameFocusRect) {
        if (qobject_cast<const QAbstractItemView*>(widget)
            != nullptr) // thin, to leave room for the item's text
            DrawOutline(option->rect, FocusColor(option->palette), 1, *painter);
        else if (option->state.testFlag(State_KeyboardFocusChange))
            DrawFocus(option->rect, option->palette, *painter);
        return;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    // Fusion draws outlines darker than the window, so on a dark window they are hardly visible. Here lighter
    // outlines are drawn over them.
    if (element == PE_FrameLineEdit && hasFocus)
        DrawFocus(option->rect, option->palette, *painter);
    else if ((element == PE_IndicatorCheckBox || element == PE_FrameLineEdit
                 || element == PE_PanelButtonCommand)
        && IsDark(option->palette))
        DrawOutline(option->rect, FrameColor(option->palette), 1, *painter);
}

// A run repaints its progress after each image. Fusion's rounded gradients would take 2 % of the run.
void TThemeStyle::drawControl(
    ControlElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const
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

void TThemeStyle::drawComplexControl(
    ComplexControl control, const QStyleOptionComplex* option, QPainter* painter, const QWidget* widget) const
{
    if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
        slider != nullptr && control == CC_Slider && slider->orientation == Qt::Horizontal) {
        DrawSlider(*slider, *painter, widget);
        return;
    }
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control == CC_ComboBox && ShowsFocus(*option))
        DrawFocus(option->rect, option->palette, *painter);
    else if (control == CC_ComboBox && IsDark(option->palette))
        DrawOutline(option->rect, FrameColor(option->palette), 1, *painter);
}

// Draws the parts one after the other, because Fusion's are hardly visible on a dark window.
void TThemeStyle::DrawSlider(const QStyleOptionSlider& slider, QPainter& painter, const QWidget* widget) const
{
    const QColor frame = FrameColor(slider.palette);
    QStyleOptionSlider part = slider;
    const auto draw = [&](SubControl control) {
        part.subControls = slider.subControls & control;
        QProxyStyle::drawComplexControl(CC_Slider, &part, &painter, widget);
        const QRect area = subControlRect(CC_Slider, &slider, control, widget);
        if (control == SC_SliderHandle && ShowsFocus(slider))
            DrawFocus(area, slider.palette, painter);
        else if (IsDark(slider.palette))
            DrawOutline(area.adjusted(1, 1, -1, -1), frame, 1, painter); // over Fusion's outline
    };
    draw(SC_SliderGroove);
    if (slider.subControls.testFlag(SC_SliderTickmarks))
        DrawTicks(slider, pixelMetric(PM_SliderLength, &slider, widget), frame, painter);
    draw(SC_SliderHandle);
}

} // namespace Corvadine
