#pragma once

#include "support/ControlFile.h"
#include "support/UpdateTask.h"

#include <QBuffer>

#include <cstddef>
#include <vector>

namespace Corvadine {

// A control file that was verified, and what of it is newer than the program folder.
struct TUpdateOffer {
    QByteArray Bytes;
    QByteArray Signature; // of Bytes
    TControlFile Control;
    std::vector<std::size_t> Newer; // indices into Control.Files; empty: nothing to do
};

// Fetches the control file and its signature, verifies, reads, and compares. Remembers the release
// (see RecordKnownRelease) where it can, and removes the staging folder of a run that was killed.
class TUpdateCheck : public TUpdateTask {
    Q_OBJECT

public:
    TUpdateCheck(const TUpdateSettings& settings, QNetworkAccessManager& manager);

    // REQUIRES: Finished.
    TUpdateOffer TakeOffer() { return std::move(FOffer); }

protected:
    void Run() override;
    void CleanUp() override { }

private:
    void FetchSignature();
    void Judge();
    bool CompareNext();

    QBuffer FControl;
    QBuffer FSignature;
    TUpdateOffer FOffer;
    std::size_t FCompared = 0; // of its files
};

} // namespace Corvadine
