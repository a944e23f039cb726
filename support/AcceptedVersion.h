#pragma once

#include <QString>

#include <array>
#include <optional>

namespace Corvadine {

struct TUpdateSettings;

// "1.2.3.4"; numbers that are not there are zero, so 1.2 is 1.2.0.
using TVersion = std::array<int, 4>;

// With three numbers, or four if the last one is not zero.
QString VersionText(const TVersion& version);

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

} // namespace Corvadine
