#pragma once

#include "base/Error.h"

#include <SQLiteCpp/Exception.h>

namespace Corvadine {

// Runs `action` and turns SQLite's exception into TError(Io) with SQLite's own text. `attempt` and `file`
// become part of the error's text.
template <typename TAction> auto Guarded(const QString& attempt, const QString& file, TAction action)
{
    try {
        return action();
    } catch (const SQLite::Exception& error) {
        throw TError(TErrorKind::Io, attempt, file, QString::fromUtf8(error.what()));
    }
}

} // namespace Corvadine
