#include "base/Error.h"

namespace Corvadine {

TError::TError(TErrorKind kind, const QString& text)
    : std::runtime_error(text.toStdString()), FKind(kind), FReason(text)
{
}

TError::TError(TErrorKind kind, const QString& attempt, const QString& file, const QString& reason)
    : TError(kind, QStringLiteral("Cannot %1 %2: %3").arg(attempt, file, reason))
{
    FReason = reason;
}

QString SystemErrorText(const std::error_code& error)
{
    // Qt knows the text as Unicode; the standard library has it in whatever code page is the system's.
    const bool isSystems = error.category() == std::system_category();
    QString text =
        (isSystems ? qt_error_string(error.value()) : QString::fromStdString(error.message())).trimmed();
    if (text.endsWith(u'.'))
        text.chop(1);
    return text;
}

} // namespace Corvadine
