#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>
#include <utility>

namespace Corvadine {

// The content of a small INI file from outside. Text that could be understood in two ways is refused. The
// file is UTF-8, and its lines end in LF or CR LF. A line is "[section]", "key=value", empty, or a comment,
// which starts with ';' or '#'. Blanks around names and values are ignored. Sections and keys mean the same
// in upper and lower case.
class TIniText {
public:
    static constexpr qsizetype MostLineCharacters = 4096;
    static constexpr qsizetype MostLines = 20'000;

    // Messages call the file `name`. Throws TError(BadInput) for text that is not UTF-8, and with the line's
    // number for a control character, a line of another form, a section or key that comes twice, a key before
    // the first section, and a line beyond the bounds above.
    TIniText(const QByteArray& bytes, const QString& name);

    // The value of `key`; empty when the section or the key is missing. REQUIRES: both are in lower case.
    std::optional<QString> Value(const QString& section, const QString& key) const;

private:
    QHash<std::pair<QString, QString>, QString> FValues; // by section and key
};

} // namespace Corvadine
