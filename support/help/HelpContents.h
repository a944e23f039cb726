#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace Corvadine {

// One line of a help file's table of contents.
struct THelpEntry {
    QString Name;
    QString Page;  // a path in the archive, which may end in "#anchor"; empty for a heading without a page
    int Level = 0; // 0 is the outermost; at most one more than the previous line's, and below 16

    bool operator==(const THelpEntry&) const = default;
};

// Reads a contents file (.hhc): HTML whose lists have an OBJECT for each entry. Skips everything else.
std::vector<THelpEntry> ParseHelpContents(const QByteArray& file);

} // namespace Corvadine
