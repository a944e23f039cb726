#pragma once

#include "support/update/UpdateCheck.h"
#include "support/update/rules/StagedUpdate.h"

#include <QNetworkAccessManager>
#include <QObject>

#include <cstddef>
#include <optional>
#include <vector>

namespace Corvadine {

// Looks for a newer release and downloads it into the staging folder. Does not install the release.
//
// The server is not trusted. The control file is used only after its signature was verified. Each file is
// used only after its size and SHA-256 were verified. A failure changes no file of the program folder and
// leaves no staging folder.
//
// Needs an event loop on the thread of the engine. Check() and Download() each start a step and return at
// once. Later the event loop emits exactly one final signal for the step. Every text in a signal is one
// sentence for the user. A slot may start the next step. A slot must not delete the engine, but may call
// deleteLater().
class TUpdateEngine : public QObject {
    Q_OBJECT

public:
    explicit TUpdateEngine(TUpdateSettings settings, QObject* parent = nullptr);
    // Ends a running step without a signal. If Downloaded() has announced a staged update, the update stays
    // on disk.
    ~TUpdateEngine() override;

    // Fetches and verifies the control file and compares it with the program folder. The final signal is
    // Checked, Failed or Cancelled. Also removes the staging folder that a killed process has left, unless
    // another process has the TUpdateLock. The function is virtual, so that screenshots need no network.
    // REQUIRES: not IsBusy().
    virtual void Check();

    // Downloads the files of the last Checked() whose indices are in `chosen`, and all mandatory files. The
    // final signal is Downloaded, Failed or Cancelled. After Downloaded the engine holds the TUpdateLock
    // until the engine is destroyed or its next step begins. So no other process changes the staged files
    // before they are put into place. REQUIRES: the last Check() ended in Checked with files, not IsBusy(),
    // indices in range, and at least one file to download.
    void Download(const std::vector<std::size_t>& chosen);

    // Ends the running step with the signal Cancelled. Does nothing if no step runs.
    void Cancel();

    // Returns whether a step runs. A step runs until its final signal is emitted.
    bool IsBusy() const { return FIsBusy; }

    const TUpdateSettings& Settings() const { return FSettings; }

signals:
    // The check has ended. `files` are the newer files, in the control file's order. `files` is empty if no
    // file is newer.
    void Checked(const std::vector<Corvadine::TUpdateFile>& files);
    // `done` bytes of the download were received so far. The whole download has `total` bytes. `total` stays
    // the same until the end.
    void Progress(qint64 done, qint64 total);
    // The download has ended. The receiver must install the staged update or remove the staging folder.
    void Downloaded(const Corvadine::TStagedUpdate& update);
    void Failed(const QString& text);
    void Cancelled();

private:
    void Begin(TUpdateTask* task);
    void End();
    void Retire();

    TUpdateSettings FSettings;
    QNetworkAccessManager FManager;
    TUpdateLock FLock; // held while a staged update waits to be installed
    std::optional<TUpdateOffer> FOffer;
    TUpdateTask* FTask = nullptr; // a child of this; null when idle and after Cancel()
    bool FIsBusy = false;
};

} // namespace Corvadine
