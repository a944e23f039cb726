#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>

namespace Corvadine {

// The content of a small INI file that somebody else wrote, read strictly: whatever could be understood in
// two ways is refused. UTF-8; lines end in LF or CR LF; "[section]" and "key=value" lines, blanks around
// names and values do not count; lines that start with ';' or '#' are comments. Sections and keys in upper
// or lower case are the same.
class TIniText {
public:
    static constexpr qsizetype MostLineCharacters = 4096;
    static constexpr qsizetype MostLines = 20'000;

    // `name` is what messages call the file. Throws TError(BadInput) with the line's number for text that is
    // not UTF-8, control characters, a line that is none of the above, a section or a key that comes twice,
    // a key ahead of all sections, and when the bounds are exceeded.
    TIniText(const QByteArray& bytes, const QString& name);

    // The value of `key`; empty when the section or the key is missing. Both in lower case.
    std::optional<QString> Value(const QString& section, const QString& key) const;

private:
    using TSection = QHash<QString, QString>;

    QHash<QString, TSection> FSections;
};

} // namespace Corvadine
