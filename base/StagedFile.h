#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

namespace Corvadine {

// The new content of one file, written beside it and synced, but not yet under its name.
// Commit() puts it there in one step, so whoever looks sees the whole old file or the whole new one, also
// after a crash or a kill. Without Commit() nothing ever changes: the destructor drops the staged content.
// A symbolic link is followed, not replaced; permissions (and, where allowed, the owner) of an existing file
// are kept. Several files can be staged first and committed together. Movable, not copyable; no thread rule.
//
// Windows replaces a file by renaming twice. Should the power fail in between, the old content is complete
// beside the new under the file's name with ".XXXXXXXX.old" at its end. A file that another program holds
// open there is waited for, up to a second, and then refused.
class TStagedFile {
public:
    // Throws TError(Io) when the folder or file is not writable, also when the file is marked read-only.
    // A copy names in `original` what it is a copy of. It is open to no more people than that, from before it
    // has any content, or to its owner alone if that is gone; its owner may write. Should the system refuse
    // this, TError(Io) is thrown. On Windows a copy is open to those to whom its folder is.
    TStagedFile(const QString& path, const QByteArray& bytes, const QString& original = {});
    ~TStagedFile();
    TStagedFile(TStagedFile&& other) noexcept;
    TStagedFile& operator=(TStagedFile&&) = delete;

    // Replaces the file. Throws TError(Io); the old file is then still there. Should Windows, having moved it
    // away, let neither the new file in nor the old one back, both stay, and the text names them.
    // REQUIRES: not committed yet.
    void Commit();

private:
    class TSystemFile; // one for each operating system
    std::unique_ptr<TSystemFile> FFile;
};

} // namespace Corvadine
