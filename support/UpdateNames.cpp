#include "support/UpdateNames.h"

#include "base/Error.h"

#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <array>

namespace Corvadine {

namespace {

constexpr qsizetype MostCharacters = 200; // the program folder's own path needs room, too
constexpr qsizetype MostParts = 8;

TError Refused(const QString& name, const QString& reason)
{
    // The name comes from outside: shortened, and without characters that could make up lines of their own.
    QString shown = name.left(80);
    for (QChar& character : shown)
        if (!character.isPrint())
            character = u'?';
    return { TErrorKind::BadInput, QStringLiteral("accept the file name"),
        QStringLiteral("\"%1\"").arg(shown), reason };
}

bool IsForbidden(QChar character)
{
    return character < u' ' || character > u'~' || QStringView(u"\\<>:\"|?*").contains(character);
}

// https://learn.microsoft.com/windows/win32/fileio/naming-a-file
bool IsDevice(const QString& lowerPart)
{
    static const QStringList Devices { QStringLiteral("con"), QStringLiteral("prn"), QStringLiteral("aux"),
        QStringLiteral("nul"), QStringLiteral("conin$"), QStringLiteral("conout$"),
        QStringLiteral("clock$") };
    const QString stem = lowerPart.section(u'.', 0, 0).trimmed();
    const bool numbered =
        stem.size() == 4 && stem[3].isDigit() && (stem.startsWith(u"com") || stem.startsWith(u"lpt"));
    return numbered || Devices.contains(stem);
}

// Whether the program keeps something of the user's or of the update's own under this name.
bool IsProtected(const QString& lowerFirstPart)
{
    static const QStringList Names { QStringLiteral("corvadine.ini"), QStringLiteral("corvadinebase.ini"),
        QStringLiteral("project backups"), QStringLiteral("wupdate.log") };
    return Names.contains(lowerFirstPart) || lowerFirstPart.startsWith(u"corvadine.db")
        || lowerFirstPart.startsWith(u"corvadineupdate.");
}

void CheckPart(const QString& name, const QString& part)
{
    if (part.isEmpty() || part == u"." || part == u"..")
        throw Refused(name, QStringLiteral("it could lead out of the program folder"));
    if (part.front() == u' ' || part.back() == u' ' || part.back() == u'.')
        throw Refused(name, QStringLiteral("a blank or full stop at the end of a name is lost on Windows"));
    // "PROJEC~1" is another name of a longer one where the file system makes short names.
    if (part.contains(u'~'))
        throw Refused(name, QStringLiteral("it could be the short name of another file"));
    if (IsDevice(part.toLower()))
        throw Refused(name, QStringLiteral("it names a device"));
}

} // namespace

QString CheckedTarget(const QString& name)
{
    if (name.isEmpty() || name.size() > MostCharacters)
        throw Refused(name, QStringLiteral("it is empty or too long"));
    if (std::any_of(name.begin(), name.end(), IsForbidden))
        throw Refused(name, QStringLiteral("it holds a character that is not allowed"));
    const QStringList parts = name.split(u'/');
    if (parts.size() > MostParts)
        throw Refused(name, QStringLiteral("it has too many folders"));
    for (const QString& part : parts)
        CheckPart(name, part);
    if (IsProtected(parts.first().toLower()))
        throw Refused(name, QStringLiteral("updates must not touch this file"));
    return name;
}

void CheckTargetOnDisk(const QString& programFolder, const QString& target)
{
    QString path = programFolder;
    const QStringList parts = target.split(u'/');
    for (qsizetype i = 0; i < parts.size(); ++i) {
        path += u'/' + parts[i];
        const QFileInfo info(path);
        if (info.isSymLink() || info.isJunction())
            throw TError(
                TErrorKind::Conflict, QStringLiteral("update"), path, QStringLiteral("it is a link"));
        if (!info.exists())
            return;
        const bool isLast = i + 1 == parts.size();
        if (isLast ? !info.isFile() : !info.isDir())
            throw TError(TErrorKind::Conflict, QStringLiteral("update"), path,
                QStringLiteral("something else has its name"));
    }
}

} // namespace Corvadine
