#pragma once

#include <QString>

namespace Corvadine {

// `name`, a file's path relative to the program folder with '/', if every system that we run on takes it for
// a file inside that folder and it is none of the user's own. Throws TError(BadInput) for everything else:
// an empty, overlong or too deep name; "." and ".." and empty parts; absolute, drive and UNC names;
// backslashes and what Windows forbids in names, the colon of streams included; names of devices (CON, NUL,
// COM1 and so on) with or without extension; parts that start or end in a blank or end in a full stop;
// anything but printable ASCII; and the program's data: Corvadine.db and what SQLite puts beside it, the
// settings files, the log, "Project Backups", and what updates keep for themselves (CorvadineUpdate.*).
// Upper and lower case are the same. Looks at the text alone.
QString CheckedTarget(const QString& name);

// Throws TError(BadInput) unless `target` (which passed CheckedTarget()) can be put into `programFolder`
// without leaving it: no folder on the way is a link or a file, and what stands at its place, if anything,
// is a regular file and no link.
void CheckTargetOnDisk(const QString& programFolder, const QString& target);

} // namespace Corvadine
