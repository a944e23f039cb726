#include "base/Error.h"

#include <system_error>

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

QString SystemErrorText(int errorNumber)
{
    return QString::fromStdString(std::generic_category().message(errorNumber));
}

} // namespace Corvadine
