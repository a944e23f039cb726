#include "generate/ClearFiles.h"

#include "base/SystemFiles.h"

#include <QDir>

#include <algorithm>

namespace Corvadine {

QStringList FilesByMask(const QString& folder, const QString& mask)
{
    if (folder.isEmpty())
        return {}; // QDir would take the current folder
    // In this pattern language it would leave out names without a full stop.
    const QString pattern = mask == AllFilesMask ? QStringLiteral("*") : mask;
    // System: links that lead nowhere, and other things that are no folders.
    return QDir(folder).entryList({ pattern }, QDir::Files | QDir::Hidden | QDir::System);
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
