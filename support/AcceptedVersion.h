#pragma once

#include <QString>

#include <array>
#include <compare>
#include <optional>

namespace Corvadine {

struct TUpdateSettings;

// "1.2.3.4"; numbers that are not there are zero, so 1.2 is 1.2.0.
using TVersion = std::array<int, 4>;

// With three numbers, or four if the last one is not zero.
QString VersionText(const TVersion& version);

// A release that a verified control file has told of. One that was withdrawn counts as newer than itself,
// since that is what is said of it last.
struct TKnownRelease {
    TVersion Version {};
    bool IsWithdrawn = false;
    auto operator<=>(const TKnownRelease&) const = default; // NOLINT(modernize-use-nullptr): none is meant
};

// Reads two to four numbers below 100000. Empty for every other text.
std::optional<TVersion> ParseVersion(const QString& text);

// What no update may be older than: the newest of the program's own version and the one last recorded in the
// program folder. A record that is missing, unreadable or rubbish counts as none; the program's own version
// holds all the same. Throws TError(BadInput) when the settings' InstalledVersion is no version.
TVersion NewestAcceptedVersion(const TUpdateSettings& settings);

// Remembers that the release `version` was installed, in the program folder's CorvadineUpdate.accepted; an
// older version than the one remembered changes nothing. Call it once all files of the release are in place
// and before the old ones are dropped: earlier, a failed installation would never be offered again; never,
// and a release that leaves the executable alone could be rolled back. Throws TError(Io).
void RecordAcceptedVersion(const QString& programFolder, const QString& version);

// The newest release that a check was told of, as the program folder's CorvadineUpdate.known has it: older
// ones need not be installed to be old. A record that is missing, unreadable or rubbish counts as none.
TKnownRelease NewestKnownRelease(const QString& programFolder);

// Remembers `release`; one that is not newer than the one remembered changes nothing. Throws TError(Io).
void RecordKnownRelease(const QString& programFolder, const TKnownRelease& release);

} // namespace Corvadine
