#pragma once

#include <QString>
#include <QWidget>

#include <vector>

class QAction;
class QHBoxLayout;
class QToolButton;

namespace Corvadine {

// The strip of commands at the top of the window: captioned groups of large buttons. No button takes the
// keyboard focus, because a command may act on the editor that has the focus. Alt keys and shortcuts carry
// out the commands. The buttons show no tool tips. Disabling the ribbon disables the buttons and shortcuts of
// all its commands.
class TRibbon : public QWidget {
    Q_OBJECT

public:
    explicit TRibbon(QWidget* parent = nullptr);

    // Adds a button for `action` at the right end of the group with the caption `group`. If there is no such
    // group, adds one at the right end of the ribbon. An ampersand in the action's text marks its Alt key
    // ("&Add Project"). Returns the button, which the ribbon owns. `action` must outlive the button.
    QToolButton* AddButton(const QString& group, QAction& action);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QHBoxLayout* ButtonsOf(const QString& group);

    struct TGroup {
        QString Caption;
        QHBoxLayout* Buttons;
    };
    std::vector<TGroup> FGroups;
    QHBoxLayout* FLayout;
};

} // namespace Corvadine
