#pragma once

#include <QString>

namespace Corvadine {

// The log of updates, WUPDATE.LOG in the program folder, for people: one line a step, "22/11/2026 23:59 Look
// for a newer version: 2 files are newer". Corvadine and its helper append to it one after the other. It
// never stands in an update's way: what cannot be written is left out.
class TUpdateLog {
public:
    explicit TUpdateLog(const QString& programFolder);

    // Appends one line. Control characters, as a server's text may hold them, become blanks, so that no text
    // can pretend to be a line of its own. A log grown past LargestSize loses its older half first.
    void Write(const QString& step, const QString& result) const;

    const QString& Path() const { return FPath; }

    static constexpr qint64 LargestSize = 256LL * 1024; // bytes

private:
    void DropOlderHalf() const;

    QString FPath;
};

} // namespace Corvadine
