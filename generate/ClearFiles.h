#pragma once

#include <QString>
#include <QStringList>

namespace Corvadine {

// Matches every name, also one without a full stop.
inline constexpr QLatin1String AllFilesMask("*.*");

// Names of the files directly in `folder` that match `mask` (AllFilesMask or a pattern), hidden ones too;
// folders are none. Empty if there is no such folder.
QStringList FilesByMask(const QString& folder, const QString& mask);

// Deletes those files. Returns the number of attempts, which a file that cannot be deleted counts into; by
// tradition it is 1, not 0, when no file matches. REQUIRES: the folder exists.
int DeleteFilesByMask(const QString& folder, const QString& mask);

} // namespace Corvadine
