#pragma once

#include <QString>

#include <chrono>
#include <system_error>

// What the installing of an update asks of the operating system beyond the standard library.
namespace Corvadine {

// Makes the content of a file, or the names in a folder, survive a loss of power. Throws TError(Io). Does
// nothing for a folder where the file system keeps the order of renames by itself.
void SyncToDisk(const QString& path);

// Renames a file, over another one if there is one, in one step. Waits up to a second for programs that look
// at one of the two for a moment.
std::error_code RenameOver(const QString& from, const QString& to);

// Waits until the process has ended; true at once if there is none of that number, false if it still runs
// after `limit`.
bool WaitForProcessEnd(qint64 processId, std::chrono::milliseconds limit);

// The absolute path of the program that this process runs; works before there is a QCoreApplication. Empty if
// the system does not tell.
QString RunningExecutable();

} // namespace Corvadine
