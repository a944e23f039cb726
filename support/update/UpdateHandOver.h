#pragma once

#include "support/update/rules/StagedUpdate.h"

#include <QByteArray>
#include <QString>

namespace Corvadine {

// Whether the helper has to install the update, because the update replaces the running program itself.
bool NeedsHelper(const TStagedUpdate& update, const TUpdateFolder& folder, const QString& executable);

// Unpacks the helper from `cabinet`, the executable's resource UPD, into a private temporary folder and
// starts it. The helper waits for this process to end, installs the staged update of `folder` and starts
// `executable` again. The caller must then release the TUpdateLock and end the program soon. Throws TError if
// the helper could not be started; no file of the helper then stays on disk.
void StartHelper(const QByteArray& cabinet, const TUpdateFolder& folder, const QString& executable);

} // namespace Corvadine
