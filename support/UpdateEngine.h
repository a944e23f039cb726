#pragma once

#include "support/UpdateSettings.h"
#include "support/UpdateTypes.h"

#include <QObject>

#include <cstddef>
#include <memory>
#include <vector>

namespace Corvadine {

class TUpdateTask;

// Looks for a newer release, and downloads it into a private folder; replaces nothing.
//
// The control file counts only once its detached signature was verified, each file only once its size and
// SHA-256 are those that the control file states; the server is not trusted. Every failure leaves the files
// of the program folder as they were and no staging folder.
//
// Asynchronous on its own thread, which needs an event loop. A call returns at once, and exactly one of its
// final signals follows from the event loop, never from within the call. All texts are one sentence for
// people. A slot must not delete the engine (deleteLater() is fine); it may start the next step.
class TUpdateEngine : public QObject {
    Q_OBJECT

public:
    explicit TUpdateEngine(TUpdateSettings settings, QObject* parent = nullptr);
    // Ends whatever runs without a signal. A staged update that was announced stays on disk.
    ~TUpdateEngine() override;

    // Fetches and verifies the control file and compares it with the program folder. Ends in Checked, Failed
    // or Cancelled. Also removes what an earlier run that was killed has left in the staging folder, unless
    // somebody holds the TUpdateLock. REQUIRES: not IsBusy(). Virtual for who stands in for the network.
    virtual void Check();

    // Downloads those of the last Checked() items whose indices are in `chosen`; mandatory ones come along
    // whether they are in it or not. Ends in Downloaded, Failed or Cancelled. Once it has ended in Downloaded
    // the engine holds the TUpdateLock until it is destroyed or a step begins, so that the files can be put
    // into place undisturbed. REQUIRES: the last Check() ended in Checked with items, not IsBusy(), indices
    // in range, and something to download.
    void Download(const std::vector<std::size_t>& chosen);

    // Ends the running step with Cancelled; does nothing when none runs.
    void Cancel();

    // Whether a step runs: its final signal has not been emitted.
    bool IsBusy() const;

    const TUpdateSettings& Settings() const;

signals:
    // What is newer, in the control file's order; empty: nothing is.
    void Checked(const std::vector<Corvadine::TUpdateItem>& items);
    // Bytes received of all that the download will receive; `total` stays the same throughout a download.
    void Progress(qint64 done, qint64 total);
    // The staged update is the receiver's: install it (see StagedUpdate.h on what follows) or remove its
    // folder.
    void Downloaded(const Corvadine::TStagedUpdate& update);
    void Failed(const QString& text);
    void Cancelled();

private:
    void Begin(TUpdateTask* task);
    void End();
    void Retire();

    TUpdateSettings FSettings;
    struct TState;
    std::unique_ptr<TState> FState;
};

} // namespace Corvadine
