#pragma once

#include <QString>

#include <string>

namespace Corvadine {

// `path` as Windows' own calls take it: absolute and with backslashes, and where it may exceed the classic
// limit, with the prefix \\?\ that lifts it on every computer (a manifest can only ask for that). Shorter
// paths go without, as the prefix also switches off the system's rules on names.
std::wstring SystemPath(const QString& path);

} // namespace Corvadine
