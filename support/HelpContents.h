#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace Corvadine {

// One line of a help file's table of contents.
struct THelpEntry {
    QString Name;
    QString Page;  // a path in the archive, perhaps with "#anchor"; empty for a mere heading
    int Level = 0; // 0 outermost; never more than one deeper than the line before

    bool operator==(const THelpEntry&) const = default;
};

// Reads a contents file (.hhc), which is HTML with lists of OBJECTs; what is not understood is skipped.
std::vector<THelpEntry> ParseHelpContents(const QByteArray& file);

} // namespace Corvadine
