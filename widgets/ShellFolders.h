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

// Returns the topmost folder: "/", or the empty path on a system with drives.
QString RootFolder();

// Returns the folder that contains `folder`, or nothing for RootFolder(). Does not access the disk.
std::optional<QString> ParentFolder(const QString& folder);

// Returns all folders from RootFolder() to `path`, including both.
QStringList FolderChain(const QString& path);

// Returns the path of the entry `name` in `folder`.
QString EntryPath(const QString& folder, const QString& name);

// Returns the text to show for `folder`: the name without the path, or "Computer" for the empty path.
QString FolderLabel(const QString& folder);

// Returns `path` in the form of this header, or nothing if `path` does not name an existing folder. A link to
// a folder counts as a folder. `path` may be relative and have the system's own delimiters.
std::optional<QString> ExistingFolder(const QString& path);

// Returns the folders in `folder`, then the files that match one of `masks` (such as "*.png"). Upper and
// lower case are alike. Without masks, no files are listed. The folders are sorted in the order of the user's
// language, and so are the files. Numbers in names are sorted by their value. Hidden entries are left out. A
// link counts as its target, which is a file or a folder. If `folder` is empty, returns the drives. If
// `folder` cannot be read, returns an empty list.
QList<TFolderEntry> ListFolder(const QString& folder, const QStringList& masks);

// Returns whether ListFolder() would find a folder in `folder`. Does not list the whole folder.
bool HasFolders(const QString& folder);

} // namespace Corvadine
