#pragma once

#include <QProxyStyle>

class QStyleOptionProgressBar;
class QStyleOptionSlider;

namespace Corvadine {

// The style of all controls: Fusion, because it looks the same on every system and follows the palette.
// Frames and focus are drawn here, so that they are whole at every scaling of the screen and visible in every
// palette. Drop-downs open lists rather than menus, because a list can be scrolled and sized.
class TThemeStyle : public QProxyStyle {
    Q_OBJECT

public:
    TThemeStyle();

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
        QStyleHintReturn* returnData) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
        const QWidget* widget) const override;

private:
    void DrawSlider(const QStyleOptionSlider& slider, QPainter& painter, const QWidget* widget) const;
};

} // namespace Corvadine
