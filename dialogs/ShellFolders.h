#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// Folders as the dialogs walk them. Paths here are absolute and separated by '/', whatever the system; what
// leaves a dialog is turned into the system's own form by its widget. Where the system has drives, a root
// without a path (the empty text) lies above them.
namespace Corvadine {

struct TFolderEntry {
    QString Name; // of a drive: its whole path
    bool IsFolder = false;
};

// Where every way up ends: "/", or the empty text above the drives.
QString RootFolder();

// The folder above `folder`; none above RootFolder(). Does not look at the disk.
std::optional<QString> ParentFolder(const QString& folder);

// All the folders from RootFolder() to `path`, both included.
QStringList FolderChain(const QString& path);

// The path of the entry `name` in `folder`.
QString EntryPath(const QString& folder, const QString& name);

// What people call `folder`: its own name, without the way to it.
QString FolderLabel(const QString& folder);

// `path`, in any form a user or a database writes it, as a path of this header if it names an existing folder
// (links followed).
std::optional<QString> ExistingFolder(const QString& path);

// The folders in `folder`, then its files that match one of `masks` ("*.png") in any mix of capitals; both in
// the order of the user's language with numbers by value. Hidden ones are left out, links stand for what they
// lead to. The empty text lists the drives. A folder that cannot be read is empty.
QList<TFolderEntry> ListFolder(const QString& folder, const QStringList& masks);

// Whether ListFolder would find a folder in `folder`, without listing it whole.
bool HasFolders(const QString& folder);

} // namespace Corvadine
