#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <system_error>

class QFile;

namespace Corvadine {

// Whether `path` names an existing file; a folder counts as none. Links are followed.
bool FileExists(const QString& path);

bool FolderExists(const QString& path);

// Opens the file whose name `file` has for reading. `attempt` opens the message: "read the project file".
// Throws TError: NotFound for a missing file, Io for a folder, a pipe or whatever the system refuses.
void OpenForReading(QFile& file, const QString& attempt);

// The whole content of a file. Throws as OpenForReading does.
QByteArray ReadFile(const QString& path, const QString& attempt);

// Replaces or creates `path` with `bytes` in one step (see TStagedFile). Throws TError(Io).
void WriteFileAtomically(const QString& path, const QByteArray& bytes);

// Removes the file or folder `path` with all that is in it, what is marked read-only too; of a link (on
// Windows also a junction) the link alone. Does nothing if there is no such thing. Goes on after a failure;
// returns the first one.
std::error_code RemoveTree(const QString& path);

// Creates `path` with every missing parent; does nothing if it is there. Throws TError(Io), also when a file
// is in the way.
void CreateFolder(const QString& path);

// A folder for the duration of a job that may fail: created with its missing parents by the constructor (as
// CreateFolder does), and those that it created removed again by the destructor, or when the constructor
// throws, if they are still empty.
class TNewFolder {
public:
    explicit TNewFolder(const QString& path);
    ~TNewFolder();
    Q_DISABLE_COPY_MOVE(TNewFolder)

private:
    TNewFolder() = default;

    QStringList FCreated; // the deepest first
};

// The absolute form of `path` with the system's own delimiters and without "." and "..": how paths that the
// user types are stored and compared.
QString AbsolutePath(const QString& path);

} // namespace Corvadine
