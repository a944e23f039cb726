#pragma once

#include <QString>

#include <array>
#include <optional>

namespace Corvadine {

// A version such as "1.2.3.4". Missing numbers are zero, so 1.2 is 1.2.0.0.
using TVersion = std::array<int, 4>;

// Returns a text of three numbers, or of four numbers if the fourth is not zero.
QString VersionText(const TVersion& version);

// Reads two to four numbers below 100000, separated by full stops. Returns no version for any other text.
std::optional<TVersion> ParseVersion(const QString& text);

} // namespace Corvadine
