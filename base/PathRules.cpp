#include "base/PathRules.h"

#include <QDir>

#include <algorithm>

namespace Corvadine {

namespace {

bool HasDrive(const QString& path)
{
    return path.size() >= 2 && path[1] == u':' && path[0].isLetter();
}

// Where the file name starts.
qsizetype FileNameStart(const QString& path)
{
    const auto afterLast = std::find_if(path.crbegin(), path.crend(), IsPathDelimiter);
    const qsizetype start = path.crend() - afterLast;
    return std::max(start, HasDrive(path) ? qsizetype { 2 } : qsizetype { 0 });
}

} // namespace

bool IsPathDelimiter(QChar character)
{
    return character == u'\\' || character == u'/';
}

bool IsFullPath(const QString& path)
{
    const qsizetype root = HasDrive(path) ? 2 : 0;
    return path.size() > root && IsPathDelimiter(path[root]);
}

QString WithTrailingDelimiter(const QString& folder)
{
    if (folder.isEmpty() || IsPathDelimiter(folder.back()))
        return folder;
    return folder + QDir::separator();
}

QString FileNameOf(const QString& path)
{
    return path.mid(FileNameStart(path));
}

QString FolderOf(const QString& path)
{
    return path.left(FileNameStart(path));
}

QString ExtensionOf(const QString& path)
{
    const auto stop = path.lastIndexOf(u'.');
    return stop < FileNameStart(path) ? QString() : path.mid(stop);
}

bool HasExtension(const QString& path, const QString& upperExtension)
{
    QString extension = ExtensionOf(path);
    for (QChar& character : extension)
        if (character >= u'a' && character <= u'z')
            character = QChar(character.unicode() - u'a' + u'A');
    return extension == upperExtension;
}

} // namespace Corvadine
