#pragma once

#include <QByteArray>
#include <QString>

// The access to files on POSIX systems: owner, group, mode and access control list. The functions also keep
// all other extended attributes.
namespace Corvadine {

// Gives the new file open as `descriptor` the access and the attributes of `target`, the file that it will
// replace. Does nothing if `target` does not exist. Only the superuser can keep another user's ownership. If
// the group cannot be kept, the new file's own group gets only the access that all users have. `path` is the
// name for messages. Throws TError(Io) when the mode, the access control list or another attribute cannot be
// kept.
void KeepAccess(int descriptor, const QByteArray& target, const QString& path);

// Gives the new file open as `descriptor` the access and the attributes of `original`, as far as the system
// allows. The new file is never open to more users than `original`. If `original` is gone, the new file is
// open to its owner alone. The owner of the new file may always write. Throws TError(Io) when the mode cannot
// be set, or an inherited access control list cannot be removed.
void CopyAccess(int descriptor, const QByteArray& original, const QString& path);

} // namespace Corvadine
