#pragma once

#include "support/update/rules/UpdateSettings.h"

#include <QByteArray>
#include <QDate>
#include <QDateTime>
#include <QString>

#include <cstddef>
#include <vector>

namespace Corvadine {

// The update server's control file. docs/UPDATES.md describes the format.

// How an installed file is compared with the file of a release.
enum class TComparison {
    Version,  // out of date if NewestAcceptedVersion() is below the file's version
    Date,     // out of date if it was modified before the file's date
    Checksum, // out of date if its bytes differ
};

// Something to download: an archive, or a single file that is not compressed.
struct TControlPackage {
    // The name of the package on the server, where it lies beside the control file. The name has no folder,
    // and CheckedTarget() accepts it.
    QString Name;
    bool Compressed = true;
    qint64 Size = 0;
    QByteArray Sha256; // 32 bytes
};

// One file of a release, as the publisher signed it.
struct TUpdateFile {
    QString Target;   // relative to the program folder, with '/'; CheckedTarget() accepts it
    QString Platform; // empty if the file is for all platforms
    TComparison Comparison = TComparison::Checksum;
    QString Version;
    QDateTime Date;  // UTC
    qint64 Size = 0; // bytes of the unpacked file
    QByteArray Sha256;
    QString Description;    // plain text for the user; must not be shown as markup
    bool Mandatory = false; // the user cannot leave it out
    bool Executable = false;
    std::size_t Package = 0; // index into TControlFile::Packages
};

struct TControlFile {
    QString Version;           // of the release
    QDateTime Date;            // UTC
    QDate ValidUntil;          // the last day (UTC) on which the control file may be used
    bool Offered = true;       // false if the publisher has withdrawn the release
    TVersion OldestProgram {}; // older programs cannot be updated to this release
    std::vector<TControlPackage> Packages;
    std::vector<TUpdateFile> Files;
};

// Returns the release that `control` announces.
TKnownRelease KnownReleaseOf(const TControlFile& control);

// Verifies the signature of a control file, and returns the content of the file. The values are checked
// although they are signed, because a key can be stolen and the publisher's tool can have faults. Throws
// TError(BadInput) for
// - a signature that was not made with the key of `publicKey`;
// - text that TIniText refuses;
// - a missing or senseless value;
// - more or larger files than `limits` allow;
// - two files for one platform that cannot both be installed: their names are equal, or the name of one file
//   is a folder in the path of the other file;
// - an entry "signature" or "appname" with another value than in this program's releases.
TControlFile ReadControlFile(const QByteArray& bytes, const QByteArray& signature,
    const QByteArray& publicKey, const TUpdateLimits& limits);

// Returns true if `control` may be used now, and false if the publisher has withdrawn the release. Throws
// TError if the last day of `control` has passed. Throws TError if the release is older than
// NewestAcceptedVersion(settings) or than the known release. Throws TError if the installed program is too
// old for the release. A release that is already installed may be used again, so that missing or damaged
// files can be downloaded.
bool IsOffered(const TControlFile& control, const TUpdateSettings& settings);

// Returns whether `file` is for this platform, and is either missing in the program folder or newer than the
// installed file. TUpdateFile::Comparison decides what is newer. May read the whole installed file. Throws
// TError if `file` could not be put into place (see TUpdateFolder::CheckTarget()), or if the installed file
// cannot be read.
bool IsNewer(const TUpdateFile& file, const TUpdateSettings& settings);

// Returns whether `file` is for `settings.Platform`.
bool IsForPlatform(const TUpdateFile& file, const TUpdateSettings& settings);

} // namespace Corvadine
