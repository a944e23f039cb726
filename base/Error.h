#pragma once

#include "base/Literals.h"

#include <QString>

#include <stdexcept>
#include <system_error>

namespace Corvadine {

// The kind of a failure, for code that reacts to it. Users read the text of the TError.
enum class TErrorKind {
    Io,       // a file, a folder or the database is missing, or cannot be read or written
    BadInput, // a file or the database can be read, but its content cannot be used
    Conflict, // another program changed what we were about to replace
    Usage,    // the caller asked for something that makes no sense
};

// The one exception type of this project. Its text is a single sentence: what was attempted, on which file,
// and the reason. The user sees this text unchanged.
class TError : public std::runtime_error {
public:
    TError(TErrorKind kind, const QString& text);

    // "Cannot `attempt` `file`: `reason`", for example TError(TErrorKind::Io, "write", path, "disk full").
    TError(TErrorKind kind, const QString& attempt, const QString& file, const QString& reason);

    TErrorKind Kind() const { return FKind; }
    QString Text() const { return QString::fromUtf8(what()); }

    // Returns the `reason` of the second constructor, for callers that name the file themselves. Returns the
    // whole text if the first constructor was used.
    const QString& Reason() const { return FReason; }

private:
    TErrorKind FKind;
    QString FReason;
};

// Returns the operating system's text for `error`, without a final full stop. Use std::system_category() for
// the numbers of system calls (errno, or GetLastError() on Windows). Use std::generic_category() for the
// numbers of the C library.
QString SystemErrorText(const std::error_code& error);

} // namespace Corvadine
