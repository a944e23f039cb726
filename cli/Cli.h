#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <ostream>

// The command-line program without its main(): parsing, the commands, and what they print.
namespace Corvadine {

// Everything that the program gets from outside. Tests use streams and a clock of their own.
struct TCliEnvironment {
    std::ostream& Out;
    std::ostream& Err;
    QString ProgramFolder;      // holds the database and the backups unless --data names another folder
    bool ShowsProgress = false; // true if Err is a terminal
    std::function<QDateTime()> Now = [] { return QDateTime::currentDateTime(); }; // local time
    std::chrono::milliseconds BusyTimeout = std::chrono::seconds(5); // longest wait for a locked database
};

// Runs one command line (without the program's name). Returns the exit status: 0 done, 1 the job failed or a
// check found something, 2 wrong usage. Results go to Out in UTF-8. Warnings and errors go to Err, one line
// each. With --json, Out always gets exactly one JSON document. Throws nothing.
int RunCli(const QStringList& arguments, const TCliEnvironment& environment);

} // namespace Corvadine
