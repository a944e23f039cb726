#include "base/Error.h"

namespace Corvadine {

TError::TError(TErrorKind kind, const QString& text)
    : std::runtime_error(text.toStdString()), FKind(kind), FReason(text)
{
}

TError::TError(TErrorKind kind, const QString& attempt, const QString& file, const QString& reason)
    : TError(kind, u"Cannot %1 %2: %3"_s.arg(attempt, file, reason))
{
    FReason = reason;
}

QString SystemErrorText(const std::error_code& error)
{
    // Qt gives the text in Unicode; the standard library gives it in the code page of the system.
    const bool isSystems = error.category() == std::system_category();
    QString text =
        (isSystems ? qt_error_string(error.value()) : QString::fromStdString(error.message())).trimmed();
    if (text.endsWith(u'.'))
        text.chop(1);
    return text;
}

} // namespace Corvadine
