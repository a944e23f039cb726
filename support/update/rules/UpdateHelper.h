#pragma once

#include <QString>
#include <QStringList>

namespace Corvadine {

// The job of the helper program. Corvadine cannot install its own update, because some systems do not let a
// program replace its own file while it runs. Besides, the new program must not start beside files of the old
// release. So Corvadine starts the helper and ends, and the helper installs the update.
struct THelperJob {
    QString ProgramFolder;
    QString Executable; // absolute path of the program to start again
    qint64 WaitFor = 0; // number of the process that has to end first
};

// The helper is unpacked into a temporary folder whose name starts with this prefix.
inline constexpr QLatin1String HelperFolderPrefix { "corvadine-update-" };

// HelperArguments() converts a job to the helper's arguments, without the program's name.
// ParseHelperArguments() converts the arguments back, and throws TError(Usage) for arguments that are no job.
QStringList HelperArguments(const THelperJob& job);
THelperJob ParseHelperArguments(const QStringList& arguments);

// Takes the TUpdateLock and waits for the process to end. Then verifies the staged update again, installs it,
// and starts the program. After a failure, starts the old program. If the process does not end, installs and
// starts nothing. Writes the steps to the log and the result to the folder's report. Removes the staging
// folder, unless another process has the lock. Returns whether the update is installed.
bool RunHelper(const THelperJob& job);

} // namespace Corvadine
