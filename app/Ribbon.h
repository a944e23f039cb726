#pragma once

#include <QString>
#include <QWidget>

#include <vector>

class QHBoxLayout;

namespace Corvadine {

class TFormAction;
class TRibbonButton;

// The strip of commands at the top of the window: captioned groups of large buttons, in the order in which
// they were first named. Nothing in it ever takes the keyboard focus, because commands may act on the editor
// that has it; the keyboard reaches them through their Alt keys and shortcuts. It shows no hints.
// Disabling the ribbon disables all of its commands' buttons and shortcuts until it is enabled again.
class TRibbon : public QWidget {
    Q_OBJECT

public:
    explicit TRibbon(QWidget* parent = nullptr);

    // Adds a button at the right end of the group with this caption. The ribbon owns the button, the action
    // must outlive it.
    TRibbonButton* AddButton(const QString& group, TFormAction& action);

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
