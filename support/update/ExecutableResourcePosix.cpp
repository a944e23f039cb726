#include "support/update/ExecutableResource.h"

#include "base/Literals.h"

#include <QFile>

namespace Corvadine {

// The executables of this system have no resources of their own, so Qt's resources are used.
QByteArray ExecutableResource(const char* name)
{
    QFile file(u":/"_s + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace Corvadine
