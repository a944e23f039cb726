#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace Corvadine {

// The new content of one file, written and synced beside the file, but not yet under the file's name.
// Commit() renames the new content, which is atomic: every program sees the whole old file or the whole new
// file, also after a crash or a kill. Without Commit() the file does not change, and the destructor deletes
// the new content. A symbolic link is followed, not replaced. The permissions of an existing file are kept,
// and its owner if the system allows it. Several files can be staged first and committed together. Movable,
// not copyable. Staged files may be used on any thread, each by one thread at a time.
//
// Windows replaces a file by two renames. If the power fails between the renames, the old content is still
// complete, in a file of the same name with ".XXXXXXXX.old" appended. If another program holds the file open,
// we wait for up to a second and then throw.
class TStagedFile {
public:
    // Stages `bytes` for the file `path`. Throws TError(Io) when the folder or file is not writable, also
    // when the file is marked read-only. For a copy, `original` names the file that is copied. The copy gets
    // the original's permissions before it gets any content, so users without access to the original cannot
    // read the copy. If the original is gone, only the owner can read the copy. The copy's owner may always
    // write. Throws TError(Io) if the system refuses these permissions. On Windows a copy has the permissions
    // of its folder.
    TStagedFile(const QString& path, const QByteArray& bytes, const QString& original = {});
    ~TStagedFile();
    TStagedFile(TStagedFile&& other) noexcept;
    TStagedFile& operator=(TStagedFile&&) = delete;

    // Replaces the file. Throws TError(Io). After a throw the old file is still in its place, with one
    // exception: Windows moves the old file away first. The system may then fail to rename the new file, and
    // also fail to move the old file back. In that case both files stay under other names, and the error's
    // text names both. REQUIRES: not committed yet.
    void Commit();

    // Commits like Commit(), but never replaces a file. Returns false, with nothing changed, if a file of
    // that name exists by now. Throws TError(Io).
    bool CommitIfNew();

    // Commits all of `files`, one after the other, and syncs each of their folders once.
    static void CommitAll(std::vector<TStagedFile>& files);

private:
    class TSystemFile; // defined once for each operating system
    std::unique_ptr<TSystemFile> FFile;
};

} // namespace Corvadine
