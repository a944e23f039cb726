#include "support/UpdateEngine.h"

#include "support/StagedUpdate.h"
#include "support/UpdateCheck.h"
#include "support/UpdateDownload.h"

#include <QNetworkAccessManager>

#include <algorithm>
#include <cassert>
#include <optional>
#include <utility>

namespace Corvadine {

static_assert(!TUpdateSettings::PostUpdateInfo, "there is nothing here that would report");

struct TUpdateEngine::TState {
    QNetworkAccessManager Manager;
    std::unique_ptr<TUpdateLock> Lock; // of a staged update
    std::optional<TUpdateOffer> Offer;
    TUpdateTask* Task = nullptr; // a child of the engine; none when idle and while Cancelled is on its way
    bool IsBusy = false;
};

TUpdateEngine::TUpdateEngine(TUpdateSettings settings, QObject* parent)
    : QObject(parent), FSettings(std::move(settings)), FState(std::make_unique<TState>())
{
    PrepareForUpdates(FState->Manager);
}

TUpdateEngine::~TUpdateEngine()
{
    if (FState->Task)
        FState->Task->Stop();
    delete FState->Task; // it uses the manager
}

const TUpdateSettings& TUpdateEngine::Settings() const
{
    return FSettings;
}

bool TUpdateEngine::IsBusy() const
{
    return FState->IsBusy;
}

void TUpdateEngine::Check()
{
    assert(!IsBusy());
    FState->Offer.reset();
    auto* const check = new TUpdateCheck(FSettings, FState->Manager);
    Begin(check);
    connect(check, &TUpdateTask::Finished, this, [this, check] {
        FState->Offer = check->TakeOffer();
        End();
        std::vector<TUpdateItem> items;
        for (const std::size_t index : FState->Offer->Newer) {
            const TControlEntry& entry = FState->Offer->Control.Files[index];
            items.push_back(
                { entry.Target, entry.Version, entry.Date, entry.Size, entry.Description, entry.Mandatory });
        }
        emit Checked(items);
    });
}

void TUpdateEngine::Download(const std::vector<std::size_t>& chosen)
{
    assert(!IsBusy() && FState->Offer);
    const TUpdateOffer& offer = *FState->Offer;
    std::vector<std::size_t> files;
    for (std::size_t i = 0; i < offer.Newer.size(); ++i)
        if (offer.Control.Files[offer.Newer[i]].Mandatory
            || std::find(chosen.begin(), chosen.end(), i) != chosen.end())
            files.push_back(offer.Newer[i]);
    assert(!files.empty());
    auto* const download = new TUpdateDownload(FSettings, FState->Manager, offer, std::move(files));
    Begin(download);
    connect(download, &TUpdateTask::Progress, this, &TUpdateEngine::Progress);
    connect(download, &TUpdateTask::Finished, this, [this, download] {
        const TStagedUpdate update = download->TakeUpdate();
        FState->Lock = download->TakeLock();
        End();
        emit Downloaded(update);
    });
}

void TUpdateEngine::Cancel()
{
    if (!FState->Task)
        return;
    FState->Task->Stop();
    FState->Task->disconnect(this);
    Retire();
    QMetaObject::invokeMethod(
        this,
        [this] {
            FState->IsBusy = false;
            emit Cancelled();
        },
        Qt::QueuedConnection);
}

void TUpdateEngine::Begin(TUpdateTask* task)
{
    FState->Lock.reset(); // whatever was staged before is given up
    FState->IsBusy = true;
    FState->Task = task;
    task->setParent(this);
    connect(task, &TUpdateTask::Failed, this, [this](const QString& text) {
        End();
        emit Failed(text);
    });
    QMetaObject::invokeMethod(task, &TUpdateTask::Start, Qt::QueuedConnection);
}

void TUpdateEngine::End()
{
    Retire();
    FState->IsBusy = false;
}

// The task may be in the middle of the signal that brought us here.
void TUpdateEngine::Retire()
{
    std::exchange(FState->Task, nullptr)->deleteLater();
}

} // namespace Corvadine
