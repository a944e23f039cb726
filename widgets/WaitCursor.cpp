#include "widgets/WaitCursor.h"

#include <QApplication>

namespace Corvadine {

void ShowWaitCursor()
{
    ShowNormalCursor(); // removes earlier wait cursors, because Qt counts them
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

void ShowNormalCursor()
{
    while (QApplication::overrideCursor() != nullptr)
        QApplication::restoreOverrideCursor();
}

} // namespace Corvadine
