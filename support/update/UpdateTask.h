#pragma once

#include "support/update/UpdateTransfer.h"
#include "support/update/rules/UpdateSettings.h"

#include <QObject>
#include <QTimer>

#include <functional>

namespace Corvadine {

// A step of an update that takes time. A task is started once, and emits Finished or Failed once unless it is
// stopped. A slot may stop the task. A slot that deletes the task must call deleteLater().
class TUpdateTask : public QObject {
    Q_OBJECT

public:
    // `settings` and `manager` must outlive the task.
    TUpdateTask(const TUpdateSettings& settings, QNetworkAccessManager& manager);

    void Start();
    // Ends the task without a signal, and removes its unfinished files from the disk.
    void Stop();

signals:
    void Progress(qint64 done, qint64 total);
    void Finished();
    void Failed(const QString& text);

protected:
    virtual void Run() = 0;    // may throw TError
    virtual void CleanUp() { } // called after a failure and by Stop(); must not throw

    // Makes the task fail if it has not ended after `limit`. REQUIRES: the constructor calls this.
    void SetTimeLimit(std::chrono::milliseconds limit) { FTimeLimit.setInterval(limit); }

    // Calls `action`. If `action` throws a TError, the task fails with the text of the error.
    void Guarded(const std::function<void()>& action);

    // Downloads `request` into `sink`. When all bytes have arrived, calls `then` through Guarded().
    void Transfer(TTransferRequest request, QIODevice& sink, const std::function<void()>& then);
    // Returns the transfer that runs or has just finished.
    const TUpdateTransfer& LastTransfer() const { return *FTransfer; }
    virtual void TransferProgress(qint64 /*bytes*/) { }

    // Does long work in small steps, so that the window can react in between. Calls `step` through Guarded()
    // whenever the event loop has nothing else to do, until `step` returns false. Then calls `then`, also
    // through Guarded().
    void InSlices(std::function<bool()> step, std::function<void()> then);

    void Finish();

    const TUpdateSettings& FSettings;

private:
    void DropTransfer();
    void Fail(const QString& text);

    QNetworkAccessManager& FManager;
    TUpdateTransfer* FTransfer = nullptr;
    QTimer FTimeLimit;
    QTimer FSlices; // runs until FStep returns false
    std::function<bool()> FStep;
    std::function<void()> FAfterSteps;
    bool FEnded = false;
};

} // namespace Corvadine
