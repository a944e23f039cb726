#include "widgets/NoteLabel.h"

namespace Corvadine {

TNoteLabel::TNoteLabel(const QString& text, QWidget* parent) : QLabel(text, parent)
{
    QPalette colors = palette();
    colors.setColor(QPalette::Window, QColor(0xFF, 0xFF, 0xCE));
    colors.setColor(QPalette::WindowText, QColor(0x20, 0x20, 0x20));
    setPalette(colors);
    setAutoFillBackground(true);
    setWordWrap(true);
    setMargin(8);
}

} // namespace Corvadine
