#include "base/FileVersion.h"

namespace Corvadine {

QString FileVersion()
{
    return QStringLiteral(CORVADINE_FILE_VERSION);
}

} // namespace Corvadine
