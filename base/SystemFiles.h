#pragma once

#include <QByteArray>
#include <QString>

#include <system_error>

// What the operating systems do differently with files. Prefer Files.h, which is built on this.
namespace Corvadine {

// Whether names that differ only in upper and lower case name two files. On Windows they name one file;
// elsewhere they usually name two.
Qt::CaseSensitivity FileNameCase();

// Whether two names or paths are the same by that rule. REQUIRES: both are written in the same form, for
// example both absolute.
inline bool IsSameFileName(const QString& left, const QString& right)
{
    return left.compare(right, FileNameCase()) == 0;
}

// Decodes the text of a file that is not Unicode: from the code page of this system, or from Windows-1252 if
// that code page is a Unicode one.
QString LegacyText(const QByteArray& bytes);

// `path` without the characters that the system ignores at the end of a name, though Qt does not: blanks and
// full stops on Windows, elsewhere none. REQUIRES: `path` is clean (see QDir::cleanPath()).
QString WithoutDroppedEnd(const QString& path);

// Creates `path`, of any length, with every missing parent. No error if it exists.
std::error_code MakeFolders(const QString& path);

// Deletes the file for good, also a hidden one. Does not delete a file that is marked read-only, though some
// systems would. Returns false if the file is still there.
bool DeleteWritableFile(const QString& path);

// Removes the file, link or empty folder `path`, also if it is marked read-only. The target of a link stays,
// be it a file or a folder.
std::error_code RemoveEntry(const QString& path);

// `path`, of any length, for libraries that open files by a name in UTF-8.
QByteArray PathForLibrary(const QString& path);

} // namespace Corvadine
