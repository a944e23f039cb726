#include "app/FormAction.h"

#include <utility>

namespace Corvadine {

TFormAction::TFormAction(const QString& caption, const QIcon& icon, std::function<void()> execute,
    std::function<bool()> enabled, QObject* parent)
    : QObject(parent)
    , FAction(new QAction(icon, caption, this))
    , FExecute(std::move(execute))
    , FEnabled(std::move(enabled))
{
    FAction->setIconText(caption); // what a button shows; Qt's own guess drops the mark of the Alt key
    FAction->setToolTip(Caption());
    connect(FAction, &QAction::triggered, this, &TFormAction::Run);
}

QString TFormAction::Caption() const
{
    return FAction->text().remove(QLatin1Char('&'));
}

void TFormAction::Update()
{
    FAction->setEnabled(!FEnabled || FEnabled());
}

void TFormAction::Execute()
{
    Update();
    FAction->trigger(); // which heeds that the action may be disabled
}

void TFormAction::Run()
{
    Update();
    if (!FAction->isEnabled())
        return;
    if (FGuard)
        FGuard(FExecute);
    else
        FExecute();
}

TFormAction& TFormActions::Add(
    const QString& caption, const QIcon& icon, std::function<void()> execute, std::function<bool()> enabled)
{
    auto action = std::make_unique<TFormAction>(caption, icon, std::move(execute), std::move(enabled));
    action->SetGuard(FGuard);
    FActions.push_back(std::move(action));
    return *FActions.back();
}

void TFormActions::SetGuard(TFormAction::TGuard guard)
{
    FGuard = std::move(guard);
    for (const auto& action : FActions)
        action->SetGuard(FGuard);
}

void TFormActions::UpdateAll()
{
    for (const auto& action : FActions)
        action->Update();
}

} // namespace Corvadine
