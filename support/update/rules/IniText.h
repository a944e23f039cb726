#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>
#include <utility>

namespace Corvadine {

// The content of a small INI file that is not trusted. Text that could be understood in two ways is refused.
// The file is UTF-8, and its lines end in LF or CR LF. A line is "[section]", "key=value", empty, or a
// comment, which starts with ';' or '#'. Blanks around names and values are ignored. Sections and keys mean
// the same in upper and lower case.
class TIniText {
public:
    static constexpr qsizetype MostLineCharacters = 4096;
    static constexpr qsizetype MostLines = 20'000;

    // Throws TError(BadInput) if the text is not UTF-8 or has a control character, a line of another form,
    // a line beyond the bounds above, a section or key for the second time, or a key before the first
    // section. Except for text that is not UTF-8, the error tells the number of the line. Messages call the
    // file `name`.
    TIniText(const QByteArray& bytes, const QString& name);

    // Returns the value of `key`, or nothing if the section or the key is missing. REQUIRES: `section` and
    // `key` are in lower case.
    std::optional<QString> Value(const QString& section, const QString& key) const;

private:
    QHash<std::pair<QString, QString>, QString> FValues; // by section and key
};

} // namespace Corvadine
