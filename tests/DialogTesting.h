#pragma once

#include "tests/WidgetTesting.h"

#include <QAbstractEventDispatcher>
#include <QAbstractItemView>
#include <QApplication>
#include <QEventLoop>
#include <QTimer>

// What the tests of dialogs share: the idle moment, and clicks on what views list.
namespace Corvadine::Testing {

// Lets the event loop handle everything and wait, as it does between a user's actions. Enabling rules are
// brought up to date then, and only then.
inline void LetIdle()
{
    QEventLoop loop;
    // The time starts once there is nothing else to do, however slow the machine is.
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

// A double-click as the system sends it: a click, then the second press.
inline void DoubleClick(QAbstractItemView* view, const QModelIndex& index)
{
    Click(view, index);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
    LetIdle();
}

inline void Press(Qt::Key key)
{
    QWidget* popup = QApplication::activePopupWidget();
    QWidget* focus = popup ? popup->focusWidget() : QApplication::focusWidget();
    ASSERT_NE(focus, nullptr);
    QTest::keyClick(focus, key);
    LetIdle();
}

// Once a modal dialog has opened, acts on it; `action` gets it as a TDialog.
template <typename TDialog, typename TAction> void InDialog(TAction action)
{
    QTimer::singleShot(0, [action] {
        LetIdle();
        auto* dialog = qobject_cast<TDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        action(*dialog);
    });
}

// The view of the drop-down that is open.
inline QAbstractItemView* OpenDropDown()
{
    QWidget* popup = QApplication::activePopupWidget();
    return popup ? popup->findChild<QAbstractItemView*>() : nullptr;
}

// The entry `name` of `view` under `parent`.
inline QModelIndex Find(const QAbstractItemView* view, const QString& name, const QModelIndex& parent = {})
{
    for (int row = 0; row < view->model()->rowCount(parent); ++row)
        if (const QModelIndex index = view->model()->index(row, 0, parent); index.data() == name)
            return index;
    return {};
}

inline QStringList Names(const QAbstractItemView* view, const QModelIndex& parent = {})
{
    QStringList names;
    for (int row = 0; row < view->model()->rowCount(parent); ++row)
        names.append(view->model()->index(row, 0, parent).data().toString());
    return names;
}

} // namespace Corvadine::Testing
