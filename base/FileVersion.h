#pragma once

#include <QString>

namespace Corvadine {

// The version of the running program's file, four numbers: "1.1.2.0". On Windows it is read from the version
// resource of the file, which the Explorer shows too; elsewhere it is compiled in. Throws TError(Io) when the
// resource cannot be read.
QString FileVersion();

} // namespace Corvadine
