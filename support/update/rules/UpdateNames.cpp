#include "support/update/rules/UpdateNames.h"

#include "base/Error.h"
#include "support/update/rules/UpdateFolder.h"
#include "support/update/rules/UpdateSettings.h"

#include <QStringList>

#include <algorithm>

namespace Corvadine {

namespace {

constexpr qsizetype MostCharacters = 200; // because the path of the program folder needs room too
constexpr qsizetype MostParts = 8;

TError Refused(const QString& name, const QString& reason)
{
    // The name comes from a server. So the message shows only its start, without characters that could start
    // a new line.
    QString shown = name.left(80);
    for (QChar& character : shown)
        if (!character.isPrint())
            character = u'?';
    return { TErrorKind::BadInput, u"accept the file name"_s, u"\"%1\""_s.arg(shown), reason };
}

bool IsForbidden(QChar character)
{
    return character < u' ' || character > u'~' || QStringView(u"\\<>:\"|?*").contains(character);
}

// https://learn.microsoft.com/windows/win32/fileio/naming-a-file
bool IsDevice(const QString& lowerPart)
{
    static const QStringList Devices { u"con"_s, u"prn"_s, u"aux"_s, u"nul"_s, u"conin$"_s, u"conout$"_s,
        u"clock$"_s };
    const QString stem = lowerPart.section(u'.', 0, 0).trimmed();
    const bool numbered =
        stem.size() == 4 && stem[3].isDigit() && (stem.startsWith(u"com") || stem.startsWith(u"lpt"));
    return numbered || Devices.contains(stem);
}

// Returns whether the program keeps data of the user or of updates under this name.
bool IsProtected(const QString& lowerFirstPart)
{
    static const QStringList Names { u"corvadine.ini"_s, u"corvadinebase.ini"_s, u"project backups"_s,
        QString(TUpdateSettings::LogFileName).toLower() };
    static const QString Own = QString(TUpdateFolder::OwnPrefix).toLower();
    return Names.contains(lowerFirstPart) || lowerFirstPart.startsWith(u"corvadine.db")
        || lowerFirstPart.startsWith(Own);
}

void CheckPart(const QString& name, const QString& part)
{
    if (part.isEmpty() || part == u"." || part == u"..")
        throw Refused(name, u"it could lead out of the program folder"_s);
    if (part.front() == u' ' || part.back() == u' ' || part.back() == u'.')
        throw Refused(name, u"a blank or full stop at the end of a name is lost on Windows"_s);
    // Some file systems give every long name a short name, such as "PROJEC~1".
    if (part.contains(u'~'))
        throw Refused(name, u"it could be the short name of another file"_s);
    if (IsDevice(part.toLower()))
        throw Refused(name, u"it names a device"_s);
}

} // namespace

QString CheckedTarget(const QString& name)
{
    if (name.isEmpty() || name.size() > MostCharacters)
        throw Refused(name, u"it is empty or too long"_s);
    if (std::any_of(name.begin(), name.end(), IsForbidden))
        throw Refused(name, u"it holds a character that is not allowed"_s);
    const QStringList parts = name.split(u'/');
    if (parts.size() > MostParts)
        throw Refused(name, u"it has too many folders"_s);
    for (const QString& part : parts)
        CheckPart(name, part);
    if (IsProtected(parts.first().toLower()))
        throw Refused(name, u"updates must not touch this file"_s);
    return name;
}

} // namespace Corvadine
