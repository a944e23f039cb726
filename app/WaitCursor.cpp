#include "app/WaitCursor.h"

#include <QApplication>

namespace Corvadine {

void ShowWaitCursor()
{
    ShowNormalCursor(); // Qt stacks them
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

void ShowNormalCursor()
{
    while (QApplication::overrideCursor() != nullptr)
        QApplication::restoreOverrideCursor();
}

} // namespace Corvadine
