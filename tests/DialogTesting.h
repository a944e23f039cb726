#pragma once

#include "tests/WidgetTesting.h"

#include <QAbstractEventDispatcher>
#include <QAbstractItemView>
#include <QApplication>
#include <QEventLoop>
#include <QTimer>

// What tests of dialogs and windows share: waiting until idle, and clicks on the entries of views.
namespace Corvadine::Testing {

// Runs the event loop until it has handled all events and waits. In the program, this happens between two
// actions of the user. The enabling rules are evaluated only while the event loop waits.
inline void LetIdle()
{
    QEventLoop loop;
    // The timer starts only when there is nothing else to do, even on a slow machine.
    const auto* dispatcher = QAbstractEventDispatcher::instance();
    QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, &loop,
        [&loop] { QTimer::singleShot(10, &loop, &QEventLoop::quit); });
    loop.exec();
}

inline void Click(QAbstractItemView* view, const QModelIndex& index)
{
    ASSERT_TRUE(index.isValid());
    view->scrollTo(index);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
    LetIdle();
}

// A double-click as the system sends it: a click and then the second press.
inline void DoubleClick(QAbstractItemView* view, const QModelIndex& index)
{
    Click(view, index);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
    LetIdle();
}

// Sends a key to the widget that has the focus.
inline void Press(Qt::Key key)
{
    QTest::keyClick(static_cast<QWidget*>(nullptr), key);
    LetIdle();
}

// When the next modal dialog has opened, calls `action` with the dialog as a TDialog.
template <typename TDialog, typename TAction> void InDialog(TAction action)
{
    QTimer::singleShot(0, [action] {
        LetIdle();
        auto* dialog = qobject_cast<TDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        action(*dialog);
    });
}

// Returns the view of the open drop-down, or null if no drop-down is open.
inline QAbstractItemView* OpenDropDown()
{
    QWidget* popup = QApplication::activePopupWidget();
    return popup ? popup->findChild<QAbstractItemView*>() : nullptr;
}

// Returns the entry `name` of `view` below `parent`.
inline QModelIndex Find(const QAbstractItemView* view, const QString& name, const QModelIndex& parent = {})
{
    const QModelIndex first = view->model()->index(0, 0, parent);
    return view->model()->match(first, Qt::DisplayRole, name, 1, Qt::MatchExactly).value(0);
}

inline QStringList Names(const QAbstractItemView* view, const QModelIndex& parent = {})
{
    QStringList names;
    for (int row = 0; row < view->model()->rowCount(parent); ++row)
        names.append(view->model()->index(row, 0, parent).data().toString());
    return names;
}

} // namespace Corvadine::Testing
