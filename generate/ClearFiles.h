#pragma once

#include <QString>
#include <QStringList>

namespace Corvadine {

// Matches every file name, with or without a full stop.
inline constexpr QLatin1String AllFilesMask("*.*");

// Returns the names of the files directly in `folder` that match `mask`, which is AllFilesMask or a wildcard
// pattern. Hidden files are included, folders are not. The list is empty if `folder` does not exist.
QStringList FilesByMask(const QString& folder, const QString& mask);

// Returns the files in `folder` whose names belong to no image of any platform. So no run has made them.
QStringList ForeignFiles(const QString& folder);

// Deletes the files that FilesByMask() lists. Returns the number of deletions that were tried, including
// those that failed. Returns 1 if no file matches, as older releases did. REQUIRES: `folder` exists.
int DeleteFilesByMask(const QString& folder, const QString& mask);

} // namespace Corvadine
