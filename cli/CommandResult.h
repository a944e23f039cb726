#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <exception>

namespace Corvadine {

// The exit statuses of the program.
enum class TExit {
    Done = 0,
    Failed = 1, // the job failed, or a check found something
    WrongUsage = 2,
};

// The result of a command, in two forms: as lines of text, and as members of a JSON document.
struct TCommandResult {
    QJsonObject Json;
    QStringList Lines;
    QStringList Warnings {}; // one sentence each
    QString Error {};        // one sentence; empty unless the job failed
    TExit Exit = TExit::Done;
};

// Returns the result of a command that ended with `exception`. The error is the text of the exception. The
// status is WrongUsage for TError(Usage), otherwise Failed.
TCommandResult FailureOf(const std::exception_ptr& exception);

// Returns the whole JSON object of one result: its members, "ok", and "error" and "warnings" if there
// are any.
QJsonObject JsonOf(const TCommandResult& result);

} // namespace Corvadine
