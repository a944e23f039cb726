#pragma once

#include <QString>
#include <QStringList>

namespace Corvadine {

// What the helper program is started for. Not every system lets a program replace its own file while it runs,
// and a new program should not meet old files; so it starts the helper, which carries on from here, and ends.
struct THelperJob {
    QString ProgramFolder;
    QString Executable; // absolute; the one to start again
    qint64 WaitFor = 0; // the process that has to end first
};

// How the names of the folders start that the helper is unpacked into, one each time.
inline constexpr QLatin1String HelperFolderPrefix { "corvadine-update-" };

// The helper's command line, without its own name, and back. Parsing throws TError(Usage).
QStringList HelperArguments(const THelperJob& job);
THelperJob ParseHelperArguments(const QStringList& arguments);

// Takes the TUpdateLock, waits for the process to end, installs what waits in the staging folder, which is
// verified anew from the signature on, and starts the program again, the new one or, after a failure, the
// old. All this goes to the log, and how it ended to TakeHelperReport(). Returns whether the update is
// installed. Nothing is started when the process does not end. Nothing stays in the staging folder, unless
// somebody else has the lock.
bool RunHelper(const THelperJob& job);

// How the last helper's work ended, for the user: plain text, handed out once. Empty if there was none. For
// the start of the program, once RecoverUpdate() has found that nobody is at work.
QString TakeHelperReport(const QString& programFolder);

} // namespace Corvadine
