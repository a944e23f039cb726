#pragma once

#include "base/Literals.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <system_error>

class QFile;

namespace Corvadine {

// Whether `path` names an existing file. Returns false for a folder. Follows links.
bool FileExists(const QString& path);

bool FolderExists(const QString& path);

// Whether both paths name the same file or folder. The paths may differ by links, hard links or spelling.
// Paths that name nothing are compared as texts.
bool IsSameFile(const QString& left, const QString& right);

// Opens `file` for reading. Error texts contain `attempt`, for example "read the project file". Throws
// TError(Io) for a missing file, a folder or a pipe, and if the system refuses to open the file.
void OpenForReading(QFile& file, const QString& attempt);

// Returns the whole content of a file. Throws as OpenForReading does.
QByteArray ReadFile(const QString& path, const QString& attempt);

// Replaces or creates `path` with `bytes` in one step (see TStagedFile). Throws TError(Io).
void WriteFileAtomically(const QString& path, const QByteArray& bytes);

// Removes the file or the folder `path` with everything in it, also files marked read-only. Removes a link,
// or on Windows a junction, without its target. Does nothing if `path` does not exist. After a failure,
// removes the rest and returns the first error.
std::error_code RemoveTree(const QString& path);

// Creates the folder `path` with every missing parent. Does nothing if the folder exists. Throws TError(Io),
// also when `path` names a file.
void CreateFolder(const QString& path);

// A folder for a job that may fail. The constructor creates the folder with its missing parents, as
// CreateFolder does. The destructor removes the new folders that are still empty, so a failed job leaves none
// behind. A constructor that throws has removed its new folders already.
class TNewFolder {
public:
    explicit TNewFolder(const QString& path);
    ~TNewFolder();
    Q_DISABLE_COPY_MOVE(TNewFolder)

private:
    TNewFolder() = default;

    QStringList FCreated; // the deepest first
};

// Returns the absolute form of `path`, with the system's own delimiters and without "." and "..". Paths that
// the user types are stored and compared in this form.
QString AbsolutePath(const QString& path);

} // namespace Corvadine
