#pragma once

#include <QString>

#include <memory>

namespace Corvadine {

// A settings file: "key=value" lines under "[section]" lines, of which this program uses the section
// "Corvadine". Values are raw text: a backslash is a backslash, quotes belong to the value; blanks around it
// do not count. Reads UTF-8, UTF-16 with a byte order mark, and files in the system's 8-bit code page; writes
// UTF-8. What the file holds beside our keys is kept.
class TSettingsFile {
public:
    // Reads `path`; a missing file is an empty one, and lines that make no sense are passed over. Throws
    // TError(Io) for a file that cannot be read.
    explicit TSettingsFile(const QString& path);
    ~TSettingsFile();
    TSettingsFile(const TSettingsFile&) = delete;
    TSettingsFile& operator=(const TSettingsFile&) = delete;

    // Whether the section is there, even if it is empty.
    bool HasSection() const;

    QString Text(const char* key, const QString& missing = {}) const;
    // A value that is no integer counts as missing.
    int Integer(const char* key, int missing) const;
    // Written as 0 or 1; "true", "yes" and the like are understood.
    bool Boolean(const char* key, bool missing) const;

    // New keys are appended in the order of these calls.
    void SetText(const char* key, const QString& value);
    void SetInteger(const char* key, int value);

    // Replaces the file in one step. Throws TError(Io).
    void Save() const;

private:
    struct TIni;

    QString FPath;
    std::unique_ptr<TIni> FIni;
};

} // namespace Corvadine
