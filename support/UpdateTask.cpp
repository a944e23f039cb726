#include "support/UpdateTask.h"

#include <utility>

namespace Corvadine {

TUpdateTask::TUpdateTask(
    const TUpdateSettings& settings, QNetworkAccessManager& manager, std::chrono::milliseconds limit)
    : FSettings(settings), FManager(manager)
{
    FTimeLimit.setSingleShot(true);
    FTimeLimit.setInterval(limit);
    connect(&FTimeLimit, &QTimer::timeout, this, [this] {
        Fail(QStringLiteral("Cannot update: the server %1 takes too long").arg(FSettings.Url.host()));
    });
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
    if (FEnded) // stopped before its turn came
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

void TUpdateTask::NewTransfer(TTransferRequest request, QIODevice& sink)
{
    DropTransfer();
    FTransfer = new TUpdateTransfer(FSettings, FManager, std::move(request), sink, this);
    connect(FTransfer, &TUpdateTransfer::Failed, this, &TUpdateTask::Fail);
    connect(FTransfer, &TUpdateTransfer::Progress, this, &TUpdateTask::TransferProgress);
}

void TUpdateTask::DropTransfer()
{
    if (!FTransfer)
        return;
    // It may be the one whose signal we are answering, so it goes later.
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
