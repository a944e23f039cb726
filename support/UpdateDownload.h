#pragma once

#include "support/StagedUpdate.h"
#include "support/UpdateCheck.h"
#include "support/UpdatePackage.h"
#include "support/UpdateTask.h"

#include <QFile>

#include <memory>
#include <set>
#include <vector>

namespace Corvadine {

// Downloads the packages that hold the chosen files, takes these out and verifies them, all in the staging
// folder and under the TUpdateLock.
class TUpdateDownload : public TUpdateTask {
    Q_OBJECT

public:
    // `chosen` are indices into `offer.Control.Files`. `offer` must outlive the task.
    TUpdateDownload(const TUpdateSettings& settings, QNetworkAccessManager& manager,
        const TUpdateOffer& offer, std::vector<std::size_t> chosen);

    // REQUIRES: Finished.
    TStagedUpdate TakeUpdate() { return std::move(FUpdate); }
    std::unique_ptr<TUpdateLock> TakeLock() { return std::move(FLock); }

protected:
    void Run() override;
    void CleanUp() override;
    void TransferProgress(qint64 bytes) override;

private:
    TUpdateDownload(const TUpdateSettings& settings, QNetworkAccessManager& manager,
        const TUpdateOffer& offer, const std::set<std::size_t>& packages);

    void PrepareFolders();
    void FetchNext();
    void PackageArrived();
    void PackageDone();
    void Complete();
    bool VerifyNext();

    const TControlPackage& Package() const;
    QString StagedPath(const TControlEntry& entry) const;

    const TUpdateOffer& FOffer;
    std::vector<std::size_t> FChosen;
    std::unique_ptr<TUpdateLock> FLock;
    std::vector<std::size_t> FPackages; // still to do, the last one first
    QFile FFile;                        // the package that is being received
    std::unique_ptr<TPackageExtractor> FExtractor;
    qint64 FReceived = 0; // of the packages before
    qint64 FTotal = 0;
    TStagedUpdate FUpdate;
};

} // namespace Corvadine
