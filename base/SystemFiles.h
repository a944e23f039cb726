#pragma once

#include <QByteArray>
#include <QString>

#include <system_error>

// What the operating systems do differently with files; Files.h is for everybody, this is what it stands on.
namespace Corvadine {

// Whether names that differ in nothing but case are one file: Windows' rule, or the usual one elsewhere.
Qt::CaseSensitivity FileNameCase();

// Whether two names or paths, written alike, are one file by that rule.
inline bool IsSameFileName(const QString& left, const QString& right)
{
    return left.compare(right, FileNameCase()) == 0;
}

// The text of a file that is not Unicode: in the code page of this system, or where that is Unicode itself in
// the one of Western Windows.
QString LegacyText(const QByteArray& bytes);

// `path`, which is clean (see QDir::cleanPath()), without what the system drops at the end of a name before
// it looks for a file, and Qt does not: blanks and full stops on Windows, elsewhere nothing.
QString WithoutDroppedEnd(const QString& path);

// Creates `path` with every missing parent, of whatever length. No error if it is there.
std::error_code MakeFolders(const QString& path);

// Deletes the file, a hidden one too, for good. One that is marked read-only stays, on systems as well where
// the folder alone decides that. False if it is still there.
bool DeleteWritableFile(const QString& path);

// Removes the file, the link or the empty folder of that name, one that is marked read-only too. Of a link,
// also of one to a folder, nothing but the link goes.
std::error_code RemoveEntry(const QString& path);

// `path` as a library takes it that opens files itself by a name in UTF-8; of whatever length.
QByteArray PathForLibrary(const QString& path);

} // namespace Corvadine
