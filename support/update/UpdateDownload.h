#pragma once

#include "support/update/UpdateCheck.h"
#include "support/update/UpdatePackage.h"
#include "support/update/UpdateTask.h"
#include "support/update/rules/StagedUpdate.h"

#include <QFile>

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace Corvadine {

// Downloads the packages that hold the chosen files, extracts the files and verifies them. Works in the
// staging folder and holds the TUpdateLock.
class TUpdateDownload : public TUpdateTask {
    Q_OBJECT

public:
    // `chosen` are files of `offer.Control`. `offer` must outlive the task.
    TUpdateDownload(const TUpdateSettings& settings, QNetworkAccessManager& manager,
        const TUpdateOffer& offer, std::vector<TUpdateFile> chosen);

    // Return the staged update and its lock. REQUIRES: the task has emitted Finished.
    TStagedUpdate TakeUpdate() { return { FOffer.Control.Version, std::move(FChosen) }; }
    TUpdateLock TakeLock() { return std::move(FLock); }

protected:
    void Run() override;
    void CleanUp() override;
    void TransferProgress(qint64 bytes) override;

private:
    void PrepareFolders();
    void FetchNext();
    void PackageArrived();
    void Unpack(TPackagePlan plan);
    void PackageDone();
    void Complete();
    bool VerifyNext();

    const TControlPackage& Package() const { return FOffer.Control.Packages[FPackages.back()]; }
    QString StagedPath(const TUpdateFile& file) const { return FSettings.Folder.StagedPath(file.Target); }

    const TUpdateOffer& FOffer;
    std::vector<TUpdateFile> FChosen;
    TUpdateLock FLock;
    std::vector<std::size_t> FPackages; // indices of the unfinished packages; the last is downloaded next
    QFile FFile;                        // the package that is being received
    std::unique_ptr<TPackageExtractor> FExtractor;
    qint64 FReceived = 0;      // bytes of the packages that have arrived
    qint64 FTotal = 0;         // bytes of all packages
    std::size_t FVerified = 0; // number of the chosen files verified so far
};

} // namespace Corvadine
