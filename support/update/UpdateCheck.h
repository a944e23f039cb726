#pragma once

#include "support/update/UpdateTask.h"
#include "support/update/rules/ControlFile.h"

#include <QBuffer>

#include <cstddef>
#include <utility>
#include <vector>

namespace Corvadine {

// A verified control file, and the files in its list that are newer than the files in the program folder.
struct TUpdateOffer {
    QByteArray Bytes;
    QByteArray Signature; // of Bytes
    TControlFile Control;
    std::vector<TUpdateFile> Newer; // in the control file's order; empty if there is nothing to do
};

// Fetches the control file and its signature, verifies them, and compares the listed files with the files in
// the program folder. Removes the staging folder that a killed process has left. Remembers the announced
// release if the program folder can be written.
class TUpdateCheck : public TUpdateTask {
    Q_OBJECT

public:
    TUpdateCheck(const TUpdateSettings& settings, QNetworkAccessManager& manager);

    // Returns what the check has found. REQUIRES: the task has emitted Finished.
    TUpdateOffer TakeOffer() { return std::move(FOffer); }

protected:
    void Run() override;

private:
    void FetchSignature();
    void Judge();
    bool CompareNext();

    TUpdateOffer FOffer;
    QBuffer FControl { &FOffer.Bytes };
    QBuffer FSignature { &FOffer.Signature };
    std::size_t FCompared = 0; // number of the control file's files compared so far
};

} // namespace Corvadine
