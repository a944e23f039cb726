#include "support/UpdateCheck.h"

#include "support/StagedUpdate.h"
#include "support/UpdateSignature.h"

#include <QFileInfo>

namespace Corvadine {

namespace {

// What a killed run has left is of no use. Where it cannot go, or another process is at work with it, the
// check can do without; a download would say so.
void RemoveLeftovers(const QString& programFolder)
{
    const QFileInfo staging(StagingFolderOf(programFolder));
    if (!staging.exists() && !staging.isSymLink())
        return;
    try {
        const TUpdateLock lock(programFolder);
        RemoveStaging(programFolder);
    } catch (const TError&) { // NOLINT(bugprone-empty-catch)
    }
}

// Against a server that goes back to what it offered before. Where nothing can be written, nothing is
// installed.
void Remember(const TControlFile& control, const QString& programFolder)
{
    try {
        RecordKnownRelease(programFolder, KnownReleaseOf(control));
    } catch (const TError&) { // NOLINT(bugprone-empty-catch)
    }
}

} // namespace

TUpdateCheck::TUpdateCheck(const TUpdateSettings& settings, QNetworkAccessManager& manager)
    : TUpdateTask(settings, manager, settings.Limits.CheckTotal)
{
    FControl.open(QIODevice::WriteOnly);
    FSignature.open(QIODevice::WriteOnly);
}

void TUpdateCheck::Run()
{
    RequireKey(FSettings.PublicKey); // without one there is no need to ask the server
    RemoveLeftovers(FSettings.ProgramFolder);
    Transfer({ FSettings.Url, QStringLiteral("the list of updates"), FSettings.Limits.ControlFile, {} },
        FControl, [this] { FetchSignature(); });
}

void TUpdateCheck::FetchSignature()
{
    QUrl url = FSettings.Url;
    url.setPath(url.path() + TUpdateSettings::SignatureSuffix);
    Transfer({ url, QStringLiteral("the signature of the list of updates"), SignatureBytes, {} }, FSignature,
        [this] { Judge(); });
}

void TUpdateCheck::Judge()
{
    FOffer.Bytes = FControl.data();
    FOffer.Signature = FSignature.data();
    VerifySignature(FOffer.Bytes, FOffer.Signature, FSettings.PublicKey);
    FOffer.Control = ParseControlFile(FOffer.Bytes, FSettings.Limits);
    const bool isOffered = IsOffered(FOffer.Control, FSettings);
    Remember(FOffer.Control, FSettings.ProgramFolder);
    InSlices([this, isOffered] { return isOffered && CompareNext(); }, [this] { Finish(); });
}

// One file each time; false when none is left.
bool TUpdateCheck::CompareNext()
{
    if (FCompared == FOffer.Control.Files.size())
        return false;
    if (IsNewer(FOffer.Control.Files[FCompared], FSettings))
        FOffer.Newer.push_back(FCompared);
    ++FCompared;
    return true;
}

} // namespace Corvadine
