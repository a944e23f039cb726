#pragma once

#include <QAction>
#include <QIcon>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace Corvadine {

// One command of the window: what it is called, what it does and when it may be done. Buttons and shortcuts
// reach it through Action(). A click on a disabled command cannot come through; since its rule is evaluated
// when the event loop goes idle, it is evaluated once more just before the command is carried out.
class TFormAction : public QObject {
    Q_OBJECT

public:
    // Carries out what it is given, shows whatever that throws, and throws nothing itself: Qt calls it.
    using TGuard = std::function<void(const std::function<void()>&)>;

    // `caption` may mark its Alt key with an ampersand ("&Add Project"). Without `enabled` the command always
    // is. `enabled` must not throw; `execute` may, once there is a guard.
    TFormAction(const QString& caption, const QIcon& icon, std::function<void()> execute,
        std::function<bool()> enabled, QObject* parent = nullptr);

    // Owned by this object.
    QAction* Action() const { return FAction; }

    // The caption without the mark of its Alt key.
    QString Caption() const;

    void SetGuard(TGuard guard) { FGuard = std::move(guard); }

    // Makes it a toggle: each click switches it over before it is carried out.
    void SetCheckable(bool checkable) { FAction->setCheckable(checkable); }
    bool IsChecked() const { return FAction->isChecked(); }
    // Switches it without carrying it out.
    void SetChecked(bool checked) { FAction->setChecked(checked); }

    // Enables or disables the command as its rule says now.
    void Update();

    // What a click does: nothing unless the rule allows it.
    void Execute();

private:
    void Run();

    QAction* FAction;
    std::function<void()> FExecute;
    std::function<bool()> FEnabled;
    TGuard FGuard;
};

// The commands of one window, which run through one guard.
class TFormActions {
public:
    // Owns the new command; the reference lives as long as this list.
    TFormAction& Add(const QString& caption, const QIcon& icon, std::function<void()> execute,
        std::function<bool()> enabled = {});

    // For the commands there are and those to come.
    void SetGuard(TFormAction::TGuard guard);

    void UpdateAll();

private:
    std::vector<std::unique_ptr<TFormAction>> FActions;
    TFormAction::TGuard FGuard;
};

} // namespace Corvadine
