#include "widgets/RibbonButton.h"

#include <QAction>
#include <QEvent>
#include <QStyleOptionToolButton>
#include <QStylePainter>

#include <algorithm>

namespace Corvadine {

namespace {

constexpr int IconSide = 32;
constexpr int LineCount = 2;
constexpr int Padding = 5;
constexpr int IconGap = 3;
constexpr int MinimumWidth = 56;
constexpr double Radius = 4;
constexpr double DisabledOpacity = 0.38;

int LineWidth(const QFontMetrics& metrics, const QString& line)
{
    return metrics.size(Qt::TextSingleLine | Qt::TextShowMnemonic, line).width();
}

} // namespace

TRibbonButton::TRibbonButton(QAction& action, QWidget* parent) : QToolButton(parent)
{
    action.setIconText(action.text()); // otherwise Qt drops the ampersand that marks the Alt key
    setDefaultAction(&action);
    setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    setIconSize({ IconSide, IconSide });
    setFocusPolicy(Qt::NoFocus);
    setAutoRaise(true);
    setAccessibleName(action.text().remove(u'&'));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    // A tool button tells its action of clicks, but not of calls of setChecked().
    connect(this, &QToolButton::toggled, &action, &QAction::setChecked);
}

QSize TRibbonButton::sizeHint() const
{
    int width = MinimumWidth - 2 * Padding;
    for (const QString& line : Lines())
        width = std::max(width, LineWidth(fontMetrics(), line));
    return { width + 2 * Padding, IconSide + IconGap + LineCount * fontMetrics().height() + 2 * Padding };
}

bool TRibbonButton::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        event->ignore();
        return true;
    }
    return QToolButton::event(event);
}

void TRibbonButton::paintEvent(QPaintEvent*)
{
    QStylePainter painter(this);
    QStyleOptionToolButton option;
    initStyleOption(&option);
    PaintBackground(painter);
    if (!isEnabled())
        painter.setOpacity(DisabledOpacity);

    const QRect iconArea((width() - IconSide) / 2, Padding, IconSide, IconSide);
    icon().paint(&painter, iconArea, Qt::AlignCenter, QIcon::Normal, isChecked() ? QIcon::On : QIcon::Off);

    const bool underlines = style()->styleHint(QStyle::SH_UnderlineShortcut, &option, this) != 0;
    const int flags =
        Qt::AlignHCenter | Qt::AlignTop | (underlines ? Qt::TextShowMnemonic : Qt::TextHideMnemonic);
    QRect line(0, iconArea.bottom() + 1 + IconGap, width(), fontMetrics().height());
    option.palette.setCurrentColorGroup(QPalette::Active); // the opacity alone marks a disabled button
    for (const QString& text : Lines()) {
        painter.drawItemText(line, flags, option.palette, true, text, QPalette::ButtonText);
        line.translate(0, line.height());
    }
}

// Breaks the caption into two lines between words, so that the wider line is as narrow as possible. A caption
// of one word stays on one line.
QStringList TRibbonButton::Lines() const
{
    const QStringList words = text().split(QLatin1Char(' '));
    const QFontMetrics metrics = fontMetrics();
    QStringList best { text() };
    int bestWidth = words.size() > 1 ? QWIDGETSIZE_MAX : 0;
    for (qsizetype count = 1; count < words.size(); ++count) {
        const QStringList lines { words.first(count).join(QLatin1Char(' ')),
            words.sliced(count).join(QLatin1Char(' ')) };
        const int width = std::max(LineWidth(metrics, lines[0]), LineWidth(metrics, lines[1]));
        if (width < bestWidth) {
            best = lines;
            bestWidth = width;
        }
    }
    return best;
}

void TRibbonButton::PaintBackground(QPainter& painter) const
{
    if (!isEnabled() && !isChecked())
        return;
    const bool isPressed = isDown() || isChecked();
    if (!isPressed && !underMouse())
        return;
    QColor fill = palette().color(QPalette::Highlight);
    QColor frame = fill;
    fill.setAlphaF(isPressed ? 0.30F : 0.14F);
    frame.setAlphaF(isPressed ? 0.75F : 0.35F);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(fill);
    painter.setPen(frame);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), Radius, Radius);
}

} // namespace Corvadine
