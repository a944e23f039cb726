#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// Folders as the file dialogs list them. Paths in this header are absolute and have '/' as the delimiter on
// every system. On a system with drives, the root above the drives has the empty path.
namespace Corvadine {

struct TFolderEntry {
    QString Name; // for a drive, its path ("C:/")
    bool IsFolder = false;
};

// The topmost folder: "/", or the empty path on a system with drives.
QString RootFolder();

// Returns the folder that contains `folder`, or nothing for RootFolder(). Does not access the disk.
std::optional<QString> ParentFolder(const QString& folder);

// All folders from RootFolder() to `path`, both included.
QStringList FolderChain(const QString& path);

// The path of the entry `name` in `folder`.
QString EntryPath(const QString& folder, const QString& name);

// The name to show for `folder`: its own name without its path, or "Computer" for the empty path.
QString FolderLabel(const QString& folder);

// Converts `path` to the form of this header; returns nothing if it does not name an existing folder. Links
// are followed. `path` may be relative and have the system's own delimiters.
std::optional<QString> ExistingFolder(const QString& path);

// Lists the folders in `folder`, then its files that match one of `masks` ("*.png"; upper and lower case are
// alike). Without masks, no files are listed. Folders and files are sorted in the order of the user's
// language, and numbers in names by their value. Hidden entries are left out. A link counts as the file or
// folder that it leads to. An empty path lists the drives. The list is empty if `folder` cannot be read.
QList<TFolderEntry> ListFolder(const QString& folder, const QStringList& masks);

// Whether ListFolder() would find a folder in `folder`. Does not list the whole folder.
bool HasFolders(const QString& folder);

} // namespace Corvadine
