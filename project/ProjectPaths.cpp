#include "project/ProjectPaths.h"

#include "base/PathRules.h"

#include <QDir>
#include <QStringList>

#include <algorithm>

namespace Corvadine {

namespace {

struct TSplitPath {
    QString Drive; // "C:", "\\server\share" or empty
    QStringList Components;
};

qsizetype DriveLength(const QString& path)
{
    if (path.size() >= 2 && path[1] == u':' && path[0].isLetter())
        return 2;
    if (!path.startsWith("\\\\"_L1))
        return 0;
    const auto share = path.indexOf(u'\\', 2);
    const auto end = share < 0 ? -1 : path.indexOf(u'\\', share + 1);
    return end < 0 ? path.size() : end;
}

// REQUIRES: `path` has no delimiters but backslashes.
TSplitPath Split(const QString& path)
{
    const auto drive = DriveLength(path);
    return { path.left(drive), path.mid(drive).split(u'\\', Qt::SkipEmptyParts) };
}

bool SameName(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

QString InBackslashes(QString path)
{
    return path.replace(u'/', u'\\');
}

// Returns the path from the folder `base` to the folder `target`, or `target` itself if the drives differ.
QString RelativePath(const QString& base, const QString& target)
{
    const TSplitPath from = Split(base);
    const TSplitPath to = Split(target);
    if (!SameName(from.Drive, to.Drive))
        return target;

    const auto parting = std::mismatch(from.Components.cbegin(), from.Components.cend(),
        to.Components.cbegin(), to.Components.cend(), SameName);
    QString path = u"..\\"_s.repeated(from.Components.cend() - parting.first);
    std::for_each(parting.second, to.Components.cend(), [&](const QString& name) { path += name + u'\\'; });
    return path;
}

// The delimiter that `path` uses, or the system's delimiter if `path` has none.
QChar DelimiterOf(const QString& path)
{
    if (path.contains(u'/'))
        return u'/';
    return path.contains(u'\\') ? QChar(u'\\') : QDir::separator();
}

} // namespace

bool IsProjectFileName(const QString& path)
{
    return HasExtension(path, u".DPROJ"_s);
}

QString DeriveOutputFolder(const QString& projectFile)
{
    constexpr qsizetype ExtensionLength = 6; // of ".dproj"
    QString folder = projectFile.chopped(ExtensionLength);
    if (folder.isEmpty() || !IsPathDelimiter(folder.back()))
        folder += DelimiterOf(projectFile);
    return folder + u"Corvadine"_s;
}

QString RelativeFolder(const QString& projectFile, const QString& outputFolder)
{
    // RelativePath() treats the project file as a folder, so its result begins with one "..\" too many.
    const QString levelUp = u"..\\"_s;
    QString target = InBackslashes(outputFolder);
    if (!target.endsWith(u'\\'))
        target += u'\\';
    const QString path = RelativePath(InBackslashes(projectFile), target);
    return path.startsWith(levelUp) ? path.mid(levelUp.size()) : path;
}

} // namespace Corvadine
