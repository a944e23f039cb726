#pragma once

#include "base/Literals.h"

#include <QString>

// Rules on the text of paths; nothing here looks at the disk. Both '/' and '\' separate on every system,
// because project files and databases move between systems. A colon separates only after a drive letter.
namespace Corvadine {

bool IsPathDelimiter(QChar character);

// Whether `path` begins with a delimiter, or with a drive and a delimiter.
bool IsFullPath(const QString& path);

// Returns `folder` with the system's own delimiter appended, unless `folder` ends in a delimiter already. An
// empty text stays empty.
QString WithTrailingDelimiter(const QString& folder);

// Everything after the last delimiter or drive colon.
QString FileNameOf(const QString& path);

// Everything up to and including the last delimiter or drive colon; empty if there is none.
QString FolderOf(const QString& path);

// Returns the part of the file name from its last full stop on. Returns an empty text if there is no
// full stop.
QString ExtensionOf(const QString& path);

// Whether the extension of `path` equals `upperExtension`, for example ".DPROJ". The letters a to z in `path`
// count as A to Z, other letters must be equal.
bool HasExtension(const QString& path, const QString& upperExtension);

} // namespace Corvadine
