#include "support/UpdateDownload.h"

#include "base/Files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

#include <set>

namespace Corvadine {

namespace {

constexpr QFileDevice::Permissions OwnerOnly =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
constexpr QFileDevice::Permissions DataFile =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther;
constexpr QFileDevice::Permissions ProgramFile =
    DataFile | QFileDevice::ExeOwner | QFileDevice::ExeGroup | QFileDevice::ExeOther;

QString DownloadsFolder(const TUpdateSettings& settings)
{
    return StagingFolderOf(settings.ProgramFolder) + QStringLiteral("/downloads");
}

void RequireSpace(const QString& folder, qint64 bytes)
{
    constexpr qint64 BytesPerMegabyte = 1'000'000;
    const QStorageInfo storage(folder);
    if (storage.isValid() && storage.bytesAvailable() < bytes)
        throw TError(TErrorKind::Io,
            QStringLiteral("Cannot update: the update needs %1 MB of free space in %2")
                .arg(bytes / BytesPerMegabyte + 1)
                .arg(QDir::toNativeSeparators(folder)));
}

// What the file is to be once it is in place; its date is what a later comparison by date looks at.
void SetAttributes(const QString& path, const TControlEntry& entry)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly)
        || !file.setFileTime(entry.Date, QFileDevice::FileModificationTime)
        || !file.setPermissions(entry.Executable ? ProgramFile : DataFile))
        throw TError(TErrorKind::Io, QStringLiteral("write"), path, file.errorString());
}

// What is to be received for the chosen files, by index.
std::set<std::size_t> PackagesFor(const TControlFile& control, const std::vector<std::size_t>& chosen)
{
    std::set<std::size_t> packages;
    for (const std::size_t index : chosen)
        packages.insert(control.Files[index].Package);
    return packages;
}

qint64 BytesOf(const TControlFile& control, const std::set<std::size_t>& packages)
{
    qint64 bytes = 0;
    for (const std::size_t package : packages)
        bytes += control.Packages[package].Size;
    return bytes;
}

// More for a large download on a slow line, and no two hours for a server that lets a small one drip.
std::chrono::milliseconds TimeFor(qint64 bytes, const TUpdateLimits& limits)
{
    return limits.DownloadTotal + std::chrono::seconds(bytes / limits.LeastRate);
}

} // namespace

TUpdateDownload::TUpdateDownload(const TUpdateSettings& settings, QNetworkAccessManager& manager,
    const TUpdateOffer& offer, std::vector<std::size_t> chosen)
    : TUpdateDownload(settings, manager, offer, PackagesFor(offer.Control, chosen))
{
    FChosen = std::move(chosen);
}

TUpdateDownload::TUpdateDownload(const TUpdateSettings& settings, QNetworkAccessManager& manager,
    const TUpdateOffer& offer, const std::set<std::size_t>& packages)
    : TUpdateTask(settings, manager, TimeFor(BytesOf(offer.Control, packages), settings.Limits))
    , FOffer(offer)
    , FPackages(packages.rbegin(), packages.rend())
    , FTotal(BytesOf(offer.Control, packages))
{
}

void TUpdateDownload::Run()
{
    qint64 needed = FTotal;
    for (const std::size_t index : FChosen)
        needed += FOffer.Control.Files[index].Size;
    RequireSpace(FSettings.ProgramFolder, needed); // before the lock, which takes a file as well
    FLock = std::make_unique<TUpdateLock>(FSettings.ProgramFolder);
    PrepareFolders();
    FetchNext();
}

void TUpdateDownload::PrepareFolders()
{
    RemoveStaging(FSettings.ProgramFolder);
    const QString staging = StagingFolderOf(FSettings.ProgramFolder);
    // In two steps, since mkdir() with permissions would make a folder on Windows whose files stay closed to
    // others also after they were moved out of it.
    if (!QDir().mkdir(staging) || !QFile::setPermissions(staging, OwnerOnly))
        throw TError(TErrorKind::Io, QStringLiteral("update the program in"),
            QDir::toNativeSeparators(FSettings.ProgramFolder),
            QStringLiteral("the folder cannot be written"));
    CreateFolder(DownloadsFolder(FSettings));
    QStringList targets;
    for (const std::size_t index : FChosen) {
        const TControlEntry& entry = FOffer.Control.Files[index];
        CreateFolder(QFileInfo(StagedPath(entry)).path());
        targets.append(entry.Target);
    }
    StageControlFile(FSettings.ProgramFolder, FOffer.Bytes, FOffer.Signature, targets);
}

void TUpdateDownload::FetchNext()
{
    if (FPackages.empty()) {
        Complete();
        return;
    }
    FFile.setFileName(DownloadsFolder(FSettings) + u'/' + Package().Name);
    if (!FFile.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        throw TError(TErrorKind::Io, QStringLiteral("write"), FFile.fileName(), FFile.errorString());
    Transfer({ FSettings.Url.resolved(QUrl::fromEncoded(QUrl::toPercentEncoding(Package().Name))),
                 Package().Name, Package().Size, Package().Size },
        FFile, [this] { PackageArrived(); });
}

void TUpdateDownload::TransferProgress(qint64 bytes)
{
    emit Progress(FReceived + bytes, FTotal);
}

void TUpdateDownload::PackageArrived()
{
    if (!FFile.flush())
        throw TError(TErrorKind::Io, QStringLiteral("write"), FFile.fileName(), FFile.errorString());
    FFile.close();
    if (LastTransfer().Sha256() != Package().Sha256)
        throw TError(TErrorKind::BadInput, QStringLiteral("use"), Package().Name,
            QStringLiteral("it is not the package that the publisher released"));
    FReceived += Package().Size;

    TPackagePlan plan;
    const std::size_t package = FPackages.back();
    for (const std::size_t index : FChosen) {
        const TControlEntry& entry = FOffer.Control.Files[index];
        if (entry.Package == package)
            plan.Wanted.insert(entry.Target, { StagedPath(entry), entry.Size });
    }
    if (!Package().Compressed) {
        const QString path = plan.Wanted.cbegin()->Path; // the control file allows it one file only
        if (!FFile.rename(path))
            throw TError(TErrorKind::Io, QStringLiteral("write"), path, FFile.errorString());
        PackageDone();
        return;
    }
    for (const TControlEntry& entry : FOffer.Control.Files)
        if (entry.Package == package)
            plan.Known.insert(entry.Target);
    FExtractor = std::make_unique<TPackageExtractor>(FFile.fileName(), std::move(plan));
    InSlices([this] { return FExtractor->Step(); },
        [this] {
            FExtractor.reset();
            FFile.remove(); // makes room for the next one; what stays goes with the folder
            PackageDone();
        });
}

void TUpdateDownload::PackageDone()
{
    FPackages.pop_back();
    FetchNext();
}

void TUpdateDownload::Complete()
{
    for (const std::size_t index : FChosen)
        SetAttributes(StagedPath(FOffer.Control.Files[index]), FOffer.Control.Files[index]);
    RemoveTree(DownloadsFolder(FSettings));
    FUpdate = { StagingFolderOf(FSettings.ProgramFolder), FOffer.Control.Version, {} };
    InSlices([this] { return VerifyNext(); }, [this] { Finish(); });
}

// Reads back every byte of one file each time; false when none is left.
bool TUpdateDownload::VerifyNext()
{
    if (FUpdate.Files.size() == FChosen.size())
        return false;
    const TControlEntry& entry = FOffer.Control.Files[FChosen[FUpdate.Files.size()]];
    VerifyFile(StagedPath(entry), entry.Target, entry.Size, entry.Sha256);
    FUpdate.Files.push_back({ entry.Target, StagedPath(entry), entry.Size, entry.Sha256 });
    return true;
}

void TUpdateDownload::CleanUp()
{
    FExtractor.reset();
    FFile.close();
    if (!FLock) // the folder is somebody else's
        return;
    try {
        RemoveStaging(FSettings.ProgramFolder);
    } catch (const TError&) { // NOLINT(bugprone-empty-catch): the next check tries again
    }
    FLock.reset();
}

const TControlPackage& TUpdateDownload::Package() const
{
    return FOffer.Control.Packages[FPackages.back()];
}

QString TUpdateDownload::StagedPath(const TControlEntry& entry) const
{
    return StagedFilesFolderOf(FSettings.ProgramFolder) + u'/' + entry.Target;
}

} // namespace Corvadine
