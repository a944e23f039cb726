#include "app/Icons.h"

#include <QtGlobal>

// A linker leaves out what only registers itself, so a library's resources are asked for by name; and the
// macro must stand outside of any namespace.
static void RegisterIcons()
{
    Q_INIT_RESOURCE(icons);
}

namespace Corvadine {

void LoadIcons()
{
    RegisterIcons();
}

QIcon ApplicationIcon()
{
    LoadIcons();
    QIcon icon;
    for (const char* size : { "-16", "-32", "-48", "" })
        icon.addFile(QStringLiteral(":/icons/corvadine%1.png").arg(QLatin1String(size)));
    return icon;
}

} // namespace Corvadine
