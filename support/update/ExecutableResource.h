#pragma once

#include <QByteArray>

namespace Corvadine {

// Returns the bytes of the raw-data resource `name` in the running executable, or no bytes if there is no
// such resource.
QByteArray ExecutableResource(const char* name);

} // namespace Corvadine
