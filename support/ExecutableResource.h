#pragma once

#include <QByteArray>

namespace Corvadine {

// The bytes of the raw-data resource `name` that the running executable carries; empty if it carries none.
QByteArray ExecutableResource(const char* name);

} // namespace Corvadine
