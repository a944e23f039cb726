#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace Corvadine {

// The byte order mark of UTF-8 as bytes.
inline constexpr QByteArrayView Utf8Mark = "\xEF\xBB\xBF";

// Decodes UTF-8. A byte order mark becomes a character. Returns nothing if `bytes` are not UTF-8, or if the
// last character is cut off. QStringDecoder alone would drop a cut character without an error.
std::optional<QString> DecodeUtf8(const QByteArray& bytes);

} // namespace Corvadine
