#include "support/update/UpdateDownload.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/update/rules/FileHash.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

#include <set>

namespace Corvadine {

namespace {

constexpr QFileDevice::Permissions DataFile =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther;
constexpr QFileDevice::Permissions ProgramFile =
    DataFile | QFileDevice::ExeOwner | QFileDevice::ExeGroup | QFileDevice::ExeOther;

void RequireSpace(const QString& folder, qint64 bytes)
{
    constexpr qint64 BytesPerMegabyte = 1'000'000;
    const QStorageInfo storage(folder);
    if (storage.isValid() && storage.bytesAvailable() < bytes)
        throw TError(TErrorKind::Io,
            u"Cannot update: the update needs %1 MB of free space in %2"_s.arg(bytes / BytesPerMegabyte + 1)
                .arg(QDir::toNativeSeparators(folder)));
}

TError NotWritten(const QFileDevice& file)
{
    return { TErrorKind::Io, u"write"_s, file.fileName(), file.errorString() };
}

// Gives the staged file the date and permissions that the installed file must have. Later comparisons by date
// read this date.
void SetAttributes(const QString& path, const TUpdateFile& file)
{
    QFile staged(path);
    if (!staged.open(QIODevice::ReadWrite | QIODevice::ExistingOnly)
        || !staged.setFileTime(file.Date, QFileDevice::FileModificationTime)
        || !staged.setPermissions(file.Executable ? ProgramFile : DataFile))
        throw NotWritten(staged);
}

} // namespace

TUpdateDownload::TUpdateDownload(const TUpdateSettings& settings, QNetworkAccessManager& manager,
    const TUpdateOffer& offer, std::vector<TUpdateFile> chosen)
    : TUpdateTask(settings, manager), FOffer(offer), FChosen(std::move(chosen))
{
    std::set<std::size_t> packages;
    for (const TUpdateFile& file : FChosen)
        packages.insert(file.Package);
    for (const std::size_t package : packages)
        FTotal += offer.Control.Packages[package].Size;
    FPackages.assign(packages.rbegin(), packages.rend());
    // The limit grows with the size, so that a slow line can finish a large download. A small download has a
    // small limit, so that a server cannot make the download last long.
    SetTimeLimit(settings.Limits.DownloadTotal + std::chrono::seconds(FTotal / settings.Limits.LeastRate));
}

void TUpdateDownload::Run()
{
    qint64 needed = FTotal;
    for (const TUpdateFile& file : FChosen)
        needed += file.Size;
    RequireSpace(FSettings.Folder.Path(), needed); // before Lock(), because the lock file needs space too
    FLock = FSettings.Folder.Lock();
    PrepareFolders();
    FetchNext();
}

void TUpdateDownload::PrepareFolders()
{
    FSettings.Folder.MakeStaging();
    CreateFolder(FSettings.Folder.Downloads());
    for (const TUpdateFile& file : FChosen)
        CreateFolder(QFileInfo(StagedPath(file)).path());
    StageControlFile(FSettings.Folder, FOffer.Bytes, FOffer.Signature, FChosen);
}

void TUpdateDownload::FetchNext()
{
    if (FPackages.empty()) {
        Complete();
        return;
    }
    FFile.setFileName(FSettings.Folder.Downloads() + u'/' + Package().Name);
    if (!FFile.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        throw NotWritten(FFile);
    Transfer({ FSettings.Url.resolved(QUrl::fromEncoded(QUrl::toPercentEncoding(Package().Name))),
                 Package().Name, Package().Size, true },
        FFile, [this] { PackageArrived(); });
}

void TUpdateDownload::TransferProgress(qint64 bytes)
{
    emit Progress(FReceived + bytes, FTotal);
}

void TUpdateDownload::PackageArrived()
{
    if (!FFile.flush())
        throw NotWritten(FFile);
    FFile.close();
    if (LastTransfer().Sha256() != Package().Sha256)
        throw TError(TErrorKind::BadInput, u"use"_s, Package().Name,
            u"it is not the package that the publisher released"_s);
    FReceived += Package().Size;

    TPackagePlan plan;
    for (const TUpdateFile& file : FChosen)
        if (file.Package == FPackages.back())
            plan.Wanted.insert(file.Target, { StagedPath(file), file.Size });
    if (Package().Compressed) {
        Unpack(std::move(plan));
        return;
    }
    const QString path = plan.Wanted.cbegin()->Path; // an uncompressed package holds only one file
    if (!FFile.rename(path))
        throw TError(TErrorKind::Io, u"write"_s, path, FFile.errorString());
    PackageDone();
}

void TUpdateDownload::Unpack(TPackagePlan plan)
{
    for (const TUpdateFile& file : FOffer.Control.Files)
        if (file.Package == FPackages.back())
            plan.Known.insert(file.Target);
    FExtractor = std::make_unique<TPackageExtractor>(FFile.fileName(), std::move(plan));
    InSlices([this] { return FExtractor->Step(); },
        [this] {
            FExtractor.reset();
            FFile.remove(); // makes room for the next package; a failure does no harm
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
    for (const TUpdateFile& file : FChosen)
        SetAttributes(StagedPath(file), file);
    RemoveTree(FSettings.Folder.Downloads());
    InSlices([this] { return VerifyNext(); }, [this] { Finish(); });
}

// Reads and verifies the next file. Returns false when no file is left.
bool TUpdateDownload::VerifyNext()
{
    if (FVerified == FChosen.size())
        return false;
    const TUpdateFile& file = FChosen[FVerified++];
    VerifyFile(StagedPath(file), file.Target, file.Size, file.Sha256);
    return true;
}

void TUpdateDownload::CleanUp()
{
    FExtractor.reset();
    FFile.close();
    if (!FLock) // the staging folder belongs to another process
        return;
    FSettings.Folder.DropStaging();
    FLock.reset();
}

} // namespace Corvadine
