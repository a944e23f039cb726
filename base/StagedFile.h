#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace Corvadine {

// The new content of one file, written beside it and synced, but not yet under its name. Commit() renames it,
// which is atomic: every program sees the whole old file or the whole new one, also after a crash or a kill.
// Without Commit() the file does not change, and the destructor drops the staged content. A symbolic link is
// followed, not replaced. The permissions of an existing file are kept, and its owner where that is allowed.
// Several files can be staged first and committed together. Movable, not copyable. Staged files may be used
// on any thread, each by one thread at a time.
//
// Windows replaces a file by renaming twice. If the power fails in between, the old content is still
// complete, in a file of the same name with ".XXXXXXXX.old" behind it. If another program holds the file
// open, we wait for up to a second and then throw.
class TStagedFile {
public:
    // Throws TError(Io) when the folder or file is not writable, also when the file is marked read-only.
    // For a copy, `original` names the file that is copied. The copy gets the original's permissions before
    // it gets any content, so no user can read it who cannot read the original. If the original is gone, only
    // the owner can read the copy. Its owner may always write. Throws TError(Io) if the system refuses these
    // permissions. On Windows a copy has the permissions of its folder.
    TStagedFile(const QString& path, const QByteArray& bytes, const QString& original = {});
    ~TStagedFile();
    TStagedFile(TStagedFile&& other) noexcept;
    TStagedFile& operator=(TStagedFile&&) = delete;

    // Replaces the file. Throws TError(Io); the old file is then still there. If Windows has moved the old
    // file away, and then can neither rename the new file nor move the old one back, both files stay and the
    // text names them.
    // REQUIRES: not committed yet.
    void Commit();

    // The same unless there is a file of that name by now: false then, and nothing has changed. Throws
    // TError(Io).
    bool CommitIfNew();

    // Commits all of `files`, one after the other, and syncs each of their folders once.
    static void CommitAll(std::vector<TStagedFile>& files);

private:
    class TSystemFile; // defined once for each operating system
    std::unique_ptr<TSystemFile> FFile;
};

} // namespace Corvadine
