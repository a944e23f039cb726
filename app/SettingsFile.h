#pragma once

#include <QByteArray>
#include <QString>

namespace Corvadine {

// A settings file: "key=value" lines below "[section]" lines. This class uses only the section "Corvadine".
// Save() keeps all other lines of the file byte for byte, even lines without a meaning. Sections and keys
// mean the same in upper and lower case. If a key comes twice, the first one counts. Values are raw text:
// backslashes and quotes have no meaning, and blanks around a value do not count. Reads UTF-8, UTF-16 or
// UTF-32 with a byte order mark, and the system's 8-bit code page. Writes values in UTF-8. A file in UTF-16
// or UTF-32 becomes UTF-8 as a whole.
class TSettingsFile {
public:
    // Reads `path`. A missing file counts as empty. Throws TError(Io) if the file cannot be read.
    explicit TSettingsFile(const QString& path);

    const QString& Path() const { return FPath; }

    // Returns whether the section exists, even if it is empty.
    bool HasSection() const;

    // Returns the value of `key`, or `missing` if the file does not have the key.
    QString Text(const QByteArray& key, const QString& missing = {}) const;
    // Returns `missing` if the file does not have the key, or if the value is no integer.
    int Integer(const QByteArray& key, int missing) const;
    // Reads 1, "true", "yes" and "on" as true, and 0, "false", "no" and "off" as false.
    bool Boolean(const QByteArray& key, bool missing) const;

    // Sets a value in memory. New keys come last in the section, in the order of the calls. A value with a
    // line break, or with blanks at its start or end, becomes empty, because no line can hold such a value.
    void SetText(const QByteArray& key, const QString& value);
    void SetInteger(const QByteArray& key, int value);

    // Replaces the file in one step: a crash leaves the old file or the new one. Throws TError(Io).
    void Save() const;

private:
    struct TPlaces;

    TPlaces Find(const QByteArray& key) const;

    QString FPath;
    QByteArray FBytes;
};

} // namespace Corvadine
