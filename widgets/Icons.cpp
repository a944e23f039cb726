#include "widgets/Icons.h"

#include "base/Literals.h"

// The linker drops the resources of a library unless Q_INIT_RESOURCE names them. The macro must stand outside
// of any namespace. It may be called more than once.
static QIcon Load(const QString& path)
{
    Q_INIT_RESOURCE(icons);
    return QIcon(path); // QIcon finds the "@2x" drawing itself
}

namespace Corvadine {

QIcon CommandIcon(QLatin1String name)
{
    return Load(u":/icons/%1.png"_s.arg(name));
}

QIcon ApplicationIcon()
{
    QIcon icon = Load(u":/icons/corvadine.png"_s);
    for (const int side : { 16, 32, 48 })
        icon.addFile(u":/icons/corvadine-%1.png"_s.arg(side));
    return icon;
}

} // namespace Corvadine
