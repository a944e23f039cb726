#pragma once

#include "base/Error.h"
#include "support/UpdateSettings.h"
#include "support/UpdateTransfer.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

namespace Corvadine {

// One step of an update that takes its time: begun once, then ends in Finished or Failed once, unless it is
// stopped. A slot may stop it, but not delete it at once.
class TUpdateTask : public QObject {
    Q_OBJECT

public:
    // Fails when it has not ended after `limit`. `settings` and `manager` must outlive the task.
    TUpdateTask(
        const TUpdateSettings& settings, QNetworkAccessManager& manager, std::chrono::milliseconds limit);

    void Start();
    // No signal follows, and nothing stays on disk of what is unfinished.
    void Stop();

signals:
    void Progress(qint64 done, qint64 total);
    void Finished();
    void Failed(const QString& text);

protected:
    virtual void Run() = 0;     // may throw TError
    virtual void CleanUp() = 0; // must not throw; called after a failure and by Stop()

    // Calls `action`; a TError that it throws ends the task.
    template <typename TAction> void Guarded(TAction action)
    {
        try {
            action();
        } catch (const TError& error) {
            Fail(error.Text());
        }
    }

    // Fetches into `sink` and calls `then`, guarded, when all has arrived.
    template <typename TAction> void Transfer(TTransferRequest request, QIODevice& sink, TAction then)
    {
        NewTransfer(std::move(request), sink);
        connect(FTransfer, &TUpdateTransfer::Finished, this, [this, then] { Guarded(then); });
        FTransfer->Start();
    }
    // The one that has just finished, or runs.
    const TUpdateTransfer& LastTransfer() const { return *FTransfer; }
    virtual void TransferProgress(qint64 /*bytes*/) { }

    // Calls `step`, guarded, whenever the event loop has nothing else to do, until it returns false, and then
    // `then`: for work that would make the window wait.
    void InSlices(std::function<bool()> step, std::function<void()> then);

    void Finish();

    const TUpdateSettings& FSettings;

private:
    void NewTransfer(TTransferRequest request, QIODevice& sink);
    void DropTransfer();
    void Fail(const QString& text);

    QNetworkAccessManager& FManager;
    TUpdateTransfer* FTransfer = nullptr;
    QTimer FTimeLimit;
    QTimer FSlices; // runs while FStep has something to do
    std::function<bool()> FStep;
    std::function<void()> FAfterSteps;
    bool FEnded = false;
};

} // namespace Corvadine
