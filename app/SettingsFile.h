#pragma once

#include <QString>

#include <memory>

namespace Corvadine {

// A settings file: "key=value" lines below "[section]" lines. This class uses only the section "Corvadine"
// and keeps the rest of the file. Values are raw text: backslashes and quotes have no meaning, and blanks
// around a value do not count. Reads UTF-8, UTF-16 with a byte order mark, and the system's 8-bit code
// page. Writes UTF-8.
class TSettingsFile {
public:
    // Reads `path`. A missing file counts as empty, and lines without a meaning are skipped. Throws
    // TError(Io) if the file cannot be read.
    explicit TSettingsFile(const QString& path);
    ~TSettingsFile();
    TSettingsFile(const TSettingsFile&) = delete;
    TSettingsFile& operator=(const TSettingsFile&) = delete;

    // Returns whether the section exists, even if it is empty.
    bool HasSection() const;

    // Returns the value of `key`, or `missing` if the file does not have the key.
    QString Text(const char* key, const QString& missing = {}) const;
    // Returns the integer of `key`. Returns `missing` if the file does not have the key or the value is
    // no integer.
    int Integer(const char* key, int missing) const;
    // Returns true for 1, "true", "yes" and "on", and false for 0, "false", "no" and "off". Looks only at the
    // first letters: "1", "t", "y" and "on" suffice, and so do "0", "f", "n" and "of". Returns `missing` for
    // every other value and if the file does not have the key.
    bool Boolean(const char* key, bool missing) const;

    // Sets a value in memory; Save() writes it. New keys come last in the file, in the order of the calls.
    void SetText(const char* key, const QString& value);
    void SetInteger(const char* key, int value);

    // Replaces the file in one step: a crash leaves the old file or the new one. Throws TError(Io).
    void Save() const;

private:
    struct TIni;

    QString FPath;
    std::unique_ptr<TIni> FIni;
};

} // namespace Corvadine
