#pragma once

#include <QByteArray>
#include <QString>

// Who may read and write a file: its owner, group, mode and access control list, and with them its other
// extended attributes. For the files of systems that follow POSIX.
namespace Corvadine {

// Gives the new file open as `descriptor` everything of this that `target` has, the file it is going to
// replace; does nothing if there is no such file. Only the superuser may keep another user's ownership. Where
// the group cannot be kept, ours gets no more than all users have.
// `path` is the name for messages. Throws TError(Io) when an extended attribute cannot be kept.
void KeepAccess(int descriptor, const QByteArray& target, const QString& path);

// Makes the new file open as `descriptor` a copy of `original` in this, as far as the system allows: it is
// open to no more people, or to its owner alone if `original` is gone. Its owner may always write. Throws
// TError(Io) when its mode cannot be set.
void CopyAccess(int descriptor, const QByteArray& original, const QString& path);

} // namespace Corvadine
