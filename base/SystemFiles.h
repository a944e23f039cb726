#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <system_error>

// Calls on files that differ between operating systems. Prefer Files.h, which is built on them.
namespace Corvadine {

// Returns how file names are compared. On Windows, names that differ only in upper and lower case name one
// file. On other systems such names usually name two files.
Qt::CaseSensitivity FileNameCase();

// Whether two names or paths are the same by the rule of FileNameCase(). REQUIRES: both are written in the
// same form, for example both absolute.
inline bool IsSameFileName(const QString& left, const QString& right)
{
    return left.compare(right, FileNameCase()) == 0;
}

// Decodes the text of a file that is not Unicode. Uses the code page of this system. Uses Windows-1252
// instead if the code page is a Unicode one or cannot decode the text.
QString LegacyText(const QByteArray& bytes);

// Returns `path` without the characters that the system ignores at the end of a name. On Windows these are
// blanks and full stops, which Qt does not ignore. On other systems there are none. REQUIRES: `path` is clean
// (see QDir::cleanPath()).
QString WithoutDroppedEnd(const QString& path);

// The identity of a file or folder. All paths that lead to the same file give the same identity.
struct TFileIdentity {
    quint64 Volume;
    quint64 Number; // of the file on its volume

    bool operator==(const TFileIdentity&) const = default;
};

// Returns the identity of the file or folder that `path` names. Follows links. Returns nothing if `path`
// names nothing, or if the file system does not number files.
std::optional<TFileIdentity> FileIdentity(const QString& path);

// Whether `folder`, which exists, is the top folder of a drive, of a mounted volume or of a network share. A
// folder inside a volume does not count, even if the system mounts this folder in a second place.
bool IsDriveRoot(const QString& folder);

// Creates the folder `path`, of any length, with every missing parent. Returns no error if the folder exists.
std::error_code MakeFolders(const QString& path);

// Deletes the file for good, also a hidden one. Does not delete a file that is marked read-only, though some
// systems would. Returns whether this call deleted the file.
bool DeleteWritableFile(const QString& path);

// Removes the file, link or empty folder `path`, also if it is marked read-only. The target of a link stays,
// whether the target is a file or a folder.
std::error_code RemoveEntry(const QString& path);

// Returns `path`, of any length, as the bytes by which a library opens the file: in UTF-8 on Windows,
// elsewhere in the encoding of the file system.
QByteArray PathForLibrary(const QString& path);

} // namespace Corvadine
