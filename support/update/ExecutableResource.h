#pragma once

#include <QByteArray>

namespace Corvadine {

// The bytes of the raw-data resource `name` in the running executable; empty if it has no such resource.
QByteArray ExecutableResource(const char* name);

} // namespace Corvadine
