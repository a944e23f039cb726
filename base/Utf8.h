#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace Corvadine {

// The byte order mark of UTF-8 as bytes.
inline constexpr QByteArrayView Utf8Mark = "\xEF\xBB\xBF";

// Decodes UTF-8; a byte order mark becomes a character. Returns nothing if `bytes` are not UTF-8, also if the
// last character is cut off, which QStringDecoder would drop without a word.
std::optional<QString> DecodeUtf8(const QByteArray& bytes);

} // namespace Corvadine
