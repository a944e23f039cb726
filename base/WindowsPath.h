#pragma once

#include <QString>

#include <string>

namespace Corvadine {

// `path` as Windows' own calls take it: as AbsolutePath() has it, and where it or what is put behind it may
// exceed the classic limit, with the prefix \\?\ that lifts it on every computer (a manifest can only ask for
// that). Shorter paths go without, as the prefix also switches off the system's rules on names.
std::wstring SystemPath(const QString& path);

} // namespace Corvadine
