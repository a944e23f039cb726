#pragma once

#include "support/update/rules/StagedUpdate.h"

#include <QByteArray>
#include <QString>

namespace Corvadine {

// Returns whether the update replaces the running program `executable`, so that the helper has to install
// the update.
bool NeedsHelper(const TStagedUpdate& update, const TUpdateFolder& folder, const QString& executable);

// Unpacks the helper from `cabinet` into a private temporary folder and starts the helper. `cabinet` is the
// executable's resource UPD. The helper waits for this process to end, installs the staged update of `folder`
// and starts `executable` again. After this call the caller must release the TUpdateLock and end the program
// soon. Throws TError if the helper could not be started, and then leaves no file of the helper on disk.
void StartHelper(const QByteArray& cabinet, const TUpdateFolder& folder, const QString& executable);

} // namespace Corvadine
