#pragma once

#include <QString>

namespace Corvadine {

// The version of the running program's file, four numbers: "1.1.2.0". On Windows it is what the file's
// version resource says, as the Explorer shows it; elsewhere it is compiled in. Throws TError(Io) when the
// resource cannot be read.
QString FileVersion();

} // namespace Corvadine
