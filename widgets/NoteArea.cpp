#include "widgets/NoteArea.h"

#include "widgets/NoteLabel.h"

#include <QEvent>
#include <QScrollBar>

namespace Corvadine {

TNoteArea::TNoteArea(const QString& text, int width, QWidget* parent)
    : QScrollArea(parent), FNote(new TNoteLabel(text))
{
    FNote->setTextFormat(Qt::PlainText);
    FNote->setMargin(4);
    setFrameShape(NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
    setWidget(FNote);
    setFixedWidth(width);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Maximum);
    // The Tab key stops here only while there is something to scroll.
    setFocusPolicy(Qt::NoFocus);
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this,
        [this](int, int maximum) { setFocusPolicy(maximum > 0 ? Qt::TabFocus : Qt::NoFocus); });
}

QSize TNoteArea::sizeHint() const
{
    return { width(), FNote->heightForWidth(width()) };
}

QSize TNoteArea::minimumSizeHint() const
{
    constexpr int FewestLines = 3;
    return { width(), FewestLines * fontMetrics().lineSpacing() + 2 * FNote->margin() };
}

void TNoteArea::changeEvent(QEvent* event)
{
    QScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        updateGeometry();
}

} // namespace Corvadine
