#pragma once

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QList>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

namespace Corvadine::Testing {

// Drags `urls` onto the middle of `widget` and drops them if it accepts them, offering to copy or to move as
// a file manager does. The action that the widget took; Qt::IgnoreAction if it did not accept.
inline Qt::DropAction DropOn(QWidget& widget, const QList<QUrl>& urls)
{
    QMimeData data;
    data.setUrls(urls);
    const QPoint middle = widget.rect().center();
    const Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction;
    QDragEnterEvent enter(middle, offered, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore(); // as the application does before it asks the widget
    QApplication::sendEvent(&widget, &enter);
    if (!enter.isAccepted())
        return Qt::IgnoreAction;
    QDropEvent drop(middle, offered, &data, Qt::LeftButton, Qt::NoModifier);
    drop.ignore();
    QApplication::sendEvent(&widget, &drop);
    return drop.isAccepted() ? drop.dropAction() : Qt::IgnoreAction;
}

} // namespace Corvadine::Testing
