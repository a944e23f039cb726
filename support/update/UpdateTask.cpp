#include "support/update/UpdateTask.h"

#include "base/Error.h"

#include <utility>

namespace Corvadine {

TUpdateTask::TUpdateTask(const TUpdateSettings& settings, QNetworkAccessManager& manager)
    : FSettings(settings), FManager(manager)
{
    FTimeLimit.setSingleShot(true);
    connect(&FTimeLimit, &QTimer::timeout, this,
        [this] { Fail(u"Cannot update: the server %1 takes too long"_s.arg(FSettings.Url.host())); });
    connect(&FSlices, &QTimer::timeout, this, [this] {
        Guarded([this] {
            if (FStep())
                return;
            FSlices.stop();
            std::exchange(FAfterSteps, {})();
        });
    });
}

void TUpdateTask::Start()
{
    if (FEnded) // stopped before the event loop called this
        return;
    FTimeLimit.start();
    Guarded([this] { Run(); });
}

void TUpdateTask::Stop()
{
    FEnded = true;
    FTimeLimit.stop();
    FSlices.stop();
    DropTransfer();
    CleanUp();
}

void TUpdateTask::Finish()
{
    FEnded = true;
    FTimeLimit.stop();
    FSlices.stop();
    DropTransfer();
    emit Finished();
}

void TUpdateTask::InSlices(std::function<bool()> step, std::function<void()> then)
{
    FStep = std::move(step);
    FAfterSteps = std::move(then);
    FSlices.start(0);
}

void TUpdateTask::Guarded(const std::function<void()>& action)
{
    try {
        action();
    } catch (const TError& error) {
        Fail(error.Text());
    }
}

void TUpdateTask::Transfer(TTransferRequest request, QIODevice& sink, const std::function<void()>& then)
{
    DropTransfer();
    FTransfer = new TUpdateTransfer(FSettings, FManager, std::move(request), sink, this);
    connect(FTransfer, &TUpdateTransfer::Failed, this, &TUpdateTask::Fail);
    connect(FTransfer, &TUpdateTransfer::Progress, this, &TUpdateTask::TransferProgress);
    connect(FTransfer, &TUpdateTransfer::Finished, this, [this, then] { Guarded(then); });
    FTransfer->Start();
}

void TUpdateTask::DropTransfer()
{
    if (!FTransfer)
        return;
    // The transfer is deleted later, because one of its signals may have called this function.
    TUpdateTransfer* const transfer = std::exchange(FTransfer, nullptr);
    transfer->disconnect(this);
    transfer->Stop();
    transfer->deleteLater();
}

void TUpdateTask::Fail(const QString& text)
{
    Stop();
    emit Failed(text);
}

} // namespace Corvadine
