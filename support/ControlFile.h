#pragma once

#include "support/AcceptedVersion.h"
#include "support/UpdateSettings.h"

#include <QByteArray>
#include <QDate>
#include <QDateTime>
#include <QString>

#include <cstddef>
#include <vector>

namespace Corvadine {

// The update server's control file. docs/UPDATES.md describes the format.

// How an installed file is compared with the one that a release offers.
enum class TComparison {
    Version,  // older if what was last accepted is an older version than the file's
    Date,     // older if it was modified before the file's date
    Checksum, // out of date if its bytes differ
};

// Something to download: an archive, or a single file as it is.
struct TControlPackage {
    QString Name; // beside the control file on the server; passed CheckedTarget(), no folder
    bool Compressed = true;
    qint64 Size = 0;
    QByteArray Sha256;
};

// A file of the release.
struct TControlEntry {
    QString Target;   // relative to the program folder; passed CheckedTarget()
    QString Platform; // empty: for all
    TComparison Comparison = TComparison::Checksum;
    QString Version;
    QDateTime Date; // UTC
    qint64 Size = 0;
    QByteArray Sha256;
    QString Description; // plain text
    bool Mandatory = false;
    bool Executable = false;
    std::size_t Package = 0; // index into TControlFile::Packages
};

struct TControlFile {
    QString Version;           // of the release
    QDateTime Date;            // UTC
    QDate ValidUntil;          // the last day on which this file may be used, UTC
    bool Offered = true;       // false: the publisher has withdrawn the release
    TVersion OldestProgram {}; // older ones cannot be updated to this release
    std::vector<TControlPackage> Packages;
    std::vector<TControlEntry> Files;
};

// What `control` tells of its release.
TKnownRelease KnownReleaseOf(const TControlFile& control);

// Reads a control file whose signature has been verified; a publisher's slip is refused all the same, since
// keys get lost and tools have faults. Throws TError(BadInput): text as TIniText refuses it; a missing or
// senseless value; more or larger files than `limits` allow; one name twice for one platform or as file and
// folder; `signature` or `appname` that are not ours.
TControlFile ParseControlFile(const QByteArray& bytes, const TUpdateLimits& limits);

// Throws TError unless `control` may be used now: not past its last day, and neither older than what
// NewestAcceptedVersion(settings) says nor than NewestKnownRelease(). The same version may be: its files are
// the ones that were signed for it, so that what is missing or damaged can be had again. False if the
// publisher has withdrawn the release.
bool IsOffered(const TControlFile& control, const TUpdateSettings& settings);

// Whether a file of the release is for this platform and newer than what is in the program folder, by its own
// comparison, or missing there. May read the whole file in the folder. Throws TError when it could not be put
// into place (see CheckTargetOnDisk) or not be read.
bool IsNewer(const TControlEntry& entry, const TUpdateSettings& settings);

// Whether a file of the release is for `settings.Platform`.
bool IsForPlatform(const TControlEntry& entry, const TUpdateSettings& settings);

} // namespace Corvadine
