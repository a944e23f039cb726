#pragma once

#include <QString>

#include <stdexcept>
#include <system_error>

namespace Corvadine {

// What went wrong, for the program; people read the text.
enum class TErrorKind {
    NotFound, // a file, folder or project that was named does not exist
    BadInput, // it exists but its content cannot be used
    Io,       // the operating system refused to read or write
    Database, // the project database refused
    Conflict, // somebody else changed what we were about to replace
    Usage,    // the caller asked for something that makes no sense
};

// The one exception type of this project. Its text is a single sentence that says what was attempted,
// on which file, and the reason; it is shown to the user as it stands.
class TError : public std::runtime_error {
public:
    TError(TErrorKind kind, const QString& text);

    // "Cannot `attempt` `file`: `reason`", for example TError(TErrorKind::Io, "write", path, "disk full").
    TError(TErrorKind kind, const QString& attempt, const QString& file, const QString& reason);

    TErrorKind Kind() const { return FKind; }
    QString Text() const { return QString::fromUtf8(what()); }

    // The last of the parts, for callers that name the file themselves; the whole text where there are none.
    const QString& Reason() const { return FReason; }

private:
    TErrorKind FKind;
    QString FReason;
};

// The operating system's text for `error`, without a final full stop. Of std::system_category() are the
// numbers that its own calls give (errno, or Windows' GetLastError()), of std::generic_category() those of
// the C library.
QString SystemErrorText(const std::error_code& error);

} // namespace Corvadine
