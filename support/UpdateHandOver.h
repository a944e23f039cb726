#pragma once

#include "support/UpdateTypes.h"

#include <QByteArray>
#include <QString>

namespace Corvadine {

// Whether the update replaces the running program itself, so that the helper has to install it.
bool NeedsHelper(const TStagedUpdate& update, const QString& programFolder, const QString& executable);

// Unpacks the helper from `cabinet`, the executable's resource UPD, into a private temporary folder and
// starts it: it waits for this process to end, installs what is staged in `programFolder` and starts
// `executable` again. The caller has to give up the TUpdateLock and to end soon. Throws TError; nothing was
// started then, and nothing of the helper is left behind.
void StartHelper(const QByteArray& cabinet, const QString& programFolder, const QString& executable);

} // namespace Corvadine
