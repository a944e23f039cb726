#include "support/update/UpdateEngine.h"

#include "support/update/UpdateDownload.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace Corvadine {

static_assert(!TUpdateSettings::PostUpdateInfo, "no code here would report anything");

TUpdateEngine::TUpdateEngine(TUpdateSettings settings, QObject* parent)
    : QObject(parent), FSettings(std::move(settings))
{
    PrepareForUpdates(FManager);
}

TUpdateEngine::~TUpdateEngine()
{
    if (FTask)
        FTask->Stop();
    delete FTask; // before the manager is deleted, because the task uses the manager
}

void TUpdateEngine::Check()
{
    assert(!IsBusy());
    FOffer.reset();
    auto* const check = new TUpdateCheck(FSettings, FManager);
    Begin(check);
    connect(check, &TUpdateTask::Finished, this, [this, check] {
        FOffer = check->TakeOffer();
        End();
        const std::vector<TUpdateFile> files = FOffer->Newer; // a copy: a slot may start the next check
        emit Checked(files);
    });
}

void TUpdateEngine::Download(const std::vector<std::size_t>& chosen)
{
    assert(!IsBusy() && FOffer);
    std::vector<TUpdateFile> files;
    for (std::size_t i = 0; i < FOffer->Newer.size(); ++i)
        if (FOffer->Newer[i].Mandatory || std::find(chosen.begin(), chosen.end(), i) != chosen.end())
            files.push_back(FOffer->Newer[i]);
    assert(!files.empty());
    auto* const download = new TUpdateDownload(FSettings, FManager, *FOffer, std::move(files));
    Begin(download);
    connect(download, &TUpdateTask::Progress, this, &TUpdateEngine::Progress);
    connect(download, &TUpdateTask::Finished, this, [this, download] {
        const TStagedUpdate update = download->TakeUpdate();
        FLock = download->TakeLock();
        End();
        emit Downloaded(update);
    });
}

void TUpdateEngine::Cancel()
{
    if (!FTask)
        return;
    FTask->Stop();
    FTask->disconnect(this);
    Retire();
    const auto announce = [this] {
        FIsBusy = false;
        emit Cancelled();
    };
    QMetaObject::invokeMethod(this, announce, Qt::QueuedConnection);
}

void TUpdateEngine::Begin(TUpdateTask* task)
{
    FLock.reset(); // gives up an update that was staged before
    FIsBusy = true;
    FTask = task;
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
    FIsBusy = false;
}

// Deletes the task later, because a signal of the task may have called this function.
void TUpdateEngine::Retire()
{
    std::exchange(FTask, nullptr)->deleteLater();
}

} // namespace Corvadine
