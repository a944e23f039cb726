#pragma once

#include <QString>

namespace Corvadine {

// The log of updates, for the user. Each step is one line, such as "22/11/2026 23:59 Look for a newer
// version: 2 files are newer". The program and its helper write to the same log. A failure to write is
// ignored, so that the log never stops an update.
class TUpdateLog {
public:
    explicit TUpdateLog(const QString& path) : FPath(path) { }

    // Appends one line. Control characters become blanks, so that a text from a server cannot look like
    // several lines. Long texts are cut. If the log is larger than LargestSize, first removes its older half.
    void Write(const QString& step, const QString& result) const;

    const QString& Path() const { return FPath; }

    static constexpr qint64 LargestSize = 256LL * 1024; // bytes

private:
    void DropOlderHalf() const;

    QString FPath;
};

} // namespace Corvadine
