#include "support/ExecutableResource.h"

#include <QFile>

namespace Corvadine {

// This system's executables have no resources of their own, so Qt's stand in for them.
QByteArray ExecutableResource(const char* name)
{
    QFile file(QStringLiteral(":/") + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace Corvadine
