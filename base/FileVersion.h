#pragma once

#include <QString>

namespace Corvadine {

// Returns the version of the running program's file as four numbers: "1.1.2.0". On Windows the version comes
// from the file's version resource, which the Explorer shows, too. On other systems it is compiled in. Throws
// TError(Io) when the resource cannot be read.
QString FileVersion();

} // namespace Corvadine
