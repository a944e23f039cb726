#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace Corvadine {

// One line of a help file's table of contents.
struct THelpEntry {
    QString Name;
    QString Page;  // path in the archive, may end in "#anchor"; empty for a heading without a page
    int Level = 0; // 0 for the outermost; at most the previous line's level + 1, and below 16

    bool operator==(const THelpEntry&) const = default;
};

// Reads a contents file (.hhc). The file is HTML, and its lists have an OBJECT for each entry. Skips all
// other content. Returns the entries in the order of the file.
std::vector<THelpEntry> ParseHelpContents(const QByteArray& file);

} // namespace Corvadine
