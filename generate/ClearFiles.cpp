#include "generate/ClearFiles.h"

#include "base/Literals.h"
#include "base/SystemFiles.h"
#include "generate/Catalogue.h"

#include <QDir>

#include <algorithm>

namespace Corvadine {

QStringList FilesByMask(const QString& folder, const QString& mask)
{
    if (folder.isEmpty())
        return {}; // QDir("") is the current folder
    // For QDir, "*.*" matches only names with a full stop.
    const QString pattern = mask == AllFilesMask ? u"*"_s : mask;
    // QDir::System also lists broken links, pipes and sockets.
    return QDir(folder).entryList({ pattern }, QDir::Files | QDir::Hidden | QDir::System);
}

QStringList ForeignFiles(const QString& folder)
{
    const std::vector<TCatalogueEntry> images = CatalogueOf({ true, true, true, true });
    QStringList names = FilesByMask(folder, AllFilesMask);
    names.removeIf([&images](const QString& name) {
        return std::any_of(images.begin(), images.end(), [&name](const TCatalogueEntry& image) {
            return IsSameFileName(name, ImageFileName(image.ID.toString()));
        });
    });
    return names;
}

int DeleteFilesByMask(const QString& folder, const QString& mask)
{
    const QDir dir(folder);
    const QStringList names = FilesByMask(folder, mask);
    for (const QString& name : names)
        DeleteWritableFile(dir.filePath(name));
    return std::max(static_cast<int>(names.size()), 1);
}

} // namespace Corvadine
