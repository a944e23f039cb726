#pragma once

#include <QString>
#include <QStringList>

namespace Corvadine {

// What the helper program has to do. Corvadine itself cannot install its own update: some systems do not let
// a program replace its own file while it runs, and the new program must not start beside files of the old
// release. So Corvadine starts the helper and ends, and the helper installs the update.
struct THelperJob {
    QString ProgramFolder;
    QString Executable; // absolute path of the program to start again
    qint64 WaitFor = 0; // number of the process that has to end first
};

// The helper is unpacked into a temporary folder whose name starts with this.
inline constexpr QLatin1String HelperFolderPrefix { "corvadine-update-" };

// Converts a job to the helper's arguments (without the program's name) and back. ParseHelperArguments()
// throws TError(Usage).
QStringList HelperArguments(const THelperJob& job);
THelperJob ParseHelperArguments(const QStringList& arguments);

// Takes the TUpdateLock, waits for the process to end, and verifies the staged update anew and installs it.
// Then starts the program again: the new one, or the old one after a failure. Installs and starts nothing if
// the process does not end. Writes the steps to the log and the result to the folder's report. Removes the
// staging folder, unless another process has the lock. Returns whether the update is installed.
bool RunHelper(const THelperJob& job);

} // namespace Corvadine
