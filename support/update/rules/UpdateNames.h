#pragma once

#include <QString>

namespace Corvadine {

// Returns `name` if an update may write a file of this name. `name` is a path relative to the program folder,
// with '/' as the delimiter. On every system that we support, the name must stand for a file inside the
// program folder. The file must not hold data of the user or of updates. Looks only at the text, and ignores
// upper and lower case. Throws TError(BadInput) for
// - empty names, names of more than 200 characters or 8 parts, and anything but printable ASCII;
// - "." and ".." and empty parts; absolute, drive and UNC names; parts that may be a short name ("PROJEC~1");
// - backslashes and other characters that Windows forbids in names, such as the colon of streams;
// - names of devices (CON, NUL, COM1 and so on) with or without extension;
// - parts that start with a blank, or end in a blank or a full stop;
// - the program's data: Corvadine.db and the files that SQLite puts beside it, the settings files, "Project
//   Backups", the log of updates, and all names that start with TUpdateFolder::OwnPrefix.
QString CheckedTarget(const QString& name);

} // namespace Corvadine
