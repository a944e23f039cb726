#include "support/update/UpdateCheck.h"

#include "base/Error.h"
#include "support/update/rules/UpdateSignature.h"

#include <QFileInfo>

namespace Corvadine {

namespace {

// Removes the staging folder of a process that was killed. Ignores failures. For example, another process may
// be using the folder. A check does not need the folder, and a download reports the failure.
void RemoveLeftovers(const TUpdateFolder& folder)
{
    const QFileInfo staging(folder.Staging());
    if (!staging.exists() && !staging.isSymLink())
        return;
    try {
        const TUpdateLock lock = folder.Lock();
        folder.RemoveStaging();
    } catch (const TError&) { // NOLINT(bugprone-empty-catch)
    }
}

// Remembers the announced release, so that the server cannot go back to an older release. Ignores failures,
// because a folder that cannot be written cannot be updated either.
void Remember(const TControlFile& control, const TUpdateFolder& folder)
{
    try {
        folder.RecordKnownRelease(KnownReleaseOf(control));
    } catch (const TError&) { // NOLINT(bugprone-empty-catch)
    }
}

} // namespace

TUpdateCheck::TUpdateCheck(const TUpdateSettings& settings, QNetworkAccessManager& manager)
    : TUpdateTask(settings, manager)
{
    SetTimeLimit(settings.Limits.CheckTotal);
    FControl.open(QIODevice::WriteOnly);
    FSignature.open(QIODevice::WriteOnly);
}

void TUpdateCheck::Run()
{
    RequireKey(FSettings.PublicKey); // first, because without a key no answer of the server can be used
    RemoveLeftovers(FSettings.Folder);
    Transfer({ FSettings.Url, u"the list of updates"_s, FSettings.Limits.ControlFile }, FControl,
        [this] { FetchSignature(); });
}

void TUpdateCheck::FetchSignature()
{
    QUrl url = FSettings.Url;
    url.setPath(url.path() + TUpdateSettings::SignatureSuffix);
    Transfer(
        { url, u"the signature of the list of updates"_s, SignatureBytes }, FSignature, [this] { Judge(); });
}

void TUpdateCheck::Judge()
{
    FOffer.Control = ReadControlFile(FOffer.Bytes, FOffer.Signature, FSettings.PublicKey, FSettings.Limits);
    const bool isOffered = IsOffered(FOffer.Control, FSettings);
    Remember(FOffer.Control, FSettings.Folder);
    InSlices([this, isOffered] { return isOffered && CompareNext(); }, [this] { Finish(); });
}

// Compares the next file. Returns false when no file is left.
bool TUpdateCheck::CompareNext()
{
    if (FCompared == FOffer.Control.Files.size())
        return false;
    const TUpdateFile& file = FOffer.Control.Files[FCompared++];
    if (IsNewer(file, FSettings))
        FOffer.Newer.push_back(file);
    return true;
}

} // namespace Corvadine
