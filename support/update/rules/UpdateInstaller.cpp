#include "support/update/rules/UpdateInstaller.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/update/rules/FileHash.h"
#include "support/update/rules/InstallPlatform.h"
#include "support/update/rules/UpdateNames.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScopeGuard>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

namespace Corvadine {

namespace {

const QString CutOff = u"Find an update that was cut off"_s; // for the log

// Names in the folder of the old files.
const QString JournalName = u"/journal"_s;
const QString SettledName = u"/journal.done"_s; // the journal's name once all files are in place

std::filesystem::path StandardPath(const QString& path)
{
    return QFileInfo(path).filesystemAbsoluteFilePath();
}

void Rename(const QString& from, const QString& to)
{
    if (const std::error_code error = RenameOver(from, to))
        throw TError(TErrorKind::Io, u"replace"_s, to, SystemErrorText(error));
}

// Keeps the old file under the second name `kept`, as a hard link, which needs neither time nor space. If no
// hard link can be made, copies the file.
void Keep(const QString& file, const QString& kept)
{
    std::error_code error;
    // A hard link would share the read-only mark of the file. So a marked file is copied, and the copy loses
    // the mark.
    if (!IsMarkedReadOnly(file)) {
        std::filesystem::create_hard_link(StandardPath(file), StandardPath(kept), error);
        if (!error)
            return;
    }
    std::filesystem::copy_file(StandardPath(file), StandardPath(kept), error);
    if (error)
        throw TError(TErrorKind::Io, u"keep a copy of"_s, file, SystemErrorText(error));
    MarkReadOnly(kept, false);
    SyncToDisk(kept);
}

// Gives the new file the permissions and owner of the old file. If the release says that the new file is
// executable, all users who may read the file may run it. The read-only mark is left out here, because it
// would prevent the rename. MarkAsBefore() sets the mark later.
void KeepAttributes(const QString& file, const QString& successor)
{
    constexpr int FromReadToExe = 2; // bits between QFile::ReadX and QFile::ExeX
    constexpr auto AnyRead = QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther;
    constexpr auto OfThisProcess =
        QFile::ReadUser | QFile::WriteUser | QFile::ExeUser; // the rights of this process are not copied
    QFile::Permissions permissions = QFile::permissions(file) & ~OfThisProcess;
    if (QFile::permissions(successor).testFlag(QFile::ExeOwner))
        permissions |= QFile::Permissions((permissions & AnyRead) >> FromReadToExe);
    if (IsMarkedReadOnly(file))
        permissions |= QFile::WriteOwner;
    CopyOwner(file, successor); // first, because a change of the owner may remove permissions
    QFile::setPermissions(successor, permissions);
}

// Moves the old files to DamagedFiles(), where the user can find them. Returns an error to throw. Its text
// contains the text of `error` and the path of DamagedFiles().
TError SetAside(const TUpdateFolder& folder, const TError& error)
{
    RemoveTree(folder.DamagedFiles());
    Rename(folder.OldFiles(), folder.DamagedFiles());
    return { TErrorKind::BadInput,
        u"%1; an update was cut off and cannot be undone, so please install Corvadine anew (the "
        "old files are in %2)"_s.arg(error.Text(), QDir::toNativeSeparators(folder.DamagedFiles())) };
}

} // namespace

// One replacement of files. The object stands for a new replacement, or for an earlier replacement that was
// read from its journal.
class TUpdateInstaller::TReplacement {
public:
    TReplacement(const TUpdateInstaller& owner, const TStagedUpdate& update, const QString& executable);
    // Throws TError(BadInput) for a journal that this class did not write.
    TReplacement(const TUpdateInstaller& owner, const QByteArray& journal);

    // The steps of a replacement, in their order.
    void Verify();
    void KeepOld();
    void WriteJournal();
    void MoveIn();
    void Settle(); // after this step nothing is undone
    void Finish();

    void Undo();

    // Returns whether all new files are in place.
    bool IsAllIn() const;

private:
    struct TEntry {
        TUpdateFile File;      // only target, size and hash if a journal was read
        bool Replaces = false; // there is an old file
        bool ReadOnly = false; // the old file is marked read-only
        QString Path;          // of the target, in the program folder
        QString Kept;          // where the old file is kept
    };

    void Add(const TUpdateFile& file, bool replaces, bool isReadOnly);
    bool IsIn(const TEntry& entry) const;
    void MarkAsBefore() const;
    void SyncFolders() const;
    void Step(const QString& text) const
    {
        if (FOwner.BeforeStep)
            FOwner.BeforeStep(text);
    }

    const TUpdateInstaller& FOwner;
    const TUpdateFolder& FFolder;
    QString FJournal = FFolder.OldFiles() + JournalName;
    QString FSettled = FFolder.OldFiles() + SettledName;
    QString FVersion;
    std::vector<TEntry> FEntries;
    QStringList FNewFolders; // relative; an outer folder before its inner folders
};

TUpdateInstaller::TReplacement::TReplacement(
    const TUpdateInstaller& owner, const TStagedUpdate& update, const QString& executable)
    : FOwner(owner), FFolder(owner.FFolder), FVersion(update.Version)
{
    // The program comes last. If the replacement is cut off before the program is replaced, the next start
    // runs the old program. The old program then undoes the replacement.
    std::vector<TUpdateFile> files = update.Files;
    const QFileInfo program(executable);
    std::stable_partition(files.begin(), files.end(),
        [&](const TUpdateFile& file) { return QFileInfo(FFolder.PathOf(file.Target)) != program; });
    for (const TUpdateFile& file : files) {
        const QString path = FFolder.PathOf(file.Target);
        Add(file, FileExists(path), IsMarkedReadOnly(path));
        const QStringList parts = file.Target.split(u'/');
        for (qsizetype count = 1; count < parts.size(); ++count) {
            const QString folder = parts.first(count).join(u'/');
            if (!FolderExists(FFolder.PathOf(folder)) && !FNewFolders.contains(folder))
                FNewFolders.append(folder);
        }
    }
}

TUpdateInstaller::TReplacement::TReplacement(const TUpdateInstaller& owner, const QByteArray& journal)
    : FOwner(owner), FFolder(owner.FFolder)
{
    const QJsonObject object = QJsonDocument::fromJson(journal).object();
    FVersion = object.value(u"version").toString();
    for (const QJsonValue value : object.value(u"files").toArray()) {
        TUpdateFile file;
        file.Target = value[u"target"].toString();
        file.Size = value[u"size"].toInteger();
        file.Sha256 = QByteArray::fromHex(value[u"sha256"].toString().toLatin1());
        Add(file, value[u"replaces"].toBool(), value[u"readOnly"].toBool());
    }
    for (const QJsonValue value : object.value(u"newFolders").toArray())
        FNewFolders.append(CheckedTarget(value.toString()));
    if (FEntries.empty())
        throw TError(TErrorKind::BadInput, u"read"_s, FJournal, u"it is no journal of an update"_s);
}

// Adds a file. Throws TError if the file must not or cannot be replaced.
void TUpdateInstaller::TReplacement::Add(const TUpdateFile& file, bool replaces, bool isReadOnly)
{
    FFolder.CheckTarget(CheckedTarget(file.Target));
    FEntries.push_back({ file, replaces, isReadOnly, FFolder.PathOf(file.Target),
        FFolder.OldFiles() + u'/' + QString::number(FEntries.size()) });
}

void TUpdateInstaller::TReplacement::Verify()
{
    for (const TEntry& entry : FEntries) {
        Step(u"verify "_s + entry.File.Target);
        VerifyFile(
            FFolder.StagedPath(entry.File.Target), entry.File.Target, entry.File.Size, entry.File.Sha256);
    }
}

// Keeps the old files, and gives their attributes to the new files. Afterwards the old and the new files are
// synced to disk.
void TUpdateInstaller::TReplacement::KeepOld()
{
    Step(u"make the folder for the old files"_s);
    CreateFolder(FFolder.OldFiles());
    for (const TEntry& entry : FEntries) {
        Step(u"keep the old "_s + entry.File.Target);
        const QString staged = FFolder.StagedPath(entry.File.Target);
        if (entry.Replaces) {
            Keep(entry.Path, entry.Kept);
            KeepAttributes(entry.Path, staged);
        }
        SyncToDisk(staged);
    }
}

void TUpdateInstaller::TReplacement::WriteJournal()
{
    QJsonArray files;
    for (const TEntry& entry : FEntries)
        files.append(QJsonObject { { u"target"_s, entry.File.Target }, { u"size"_s, entry.File.Size },
            { u"sha256"_s, QString::fromLatin1(entry.File.Sha256.toHex()) },
            { u"replaces"_s, entry.Replaces }, { u"readOnly"_s, entry.ReadOnly } });
    const QJsonObject journal { { u"version"_s, FVersion }, { u"files"_s, files },
        { u"newFolders"_s, QJsonArray::fromStringList(FNewFolders) } };
    Step(u"write the journal"_s);
    WriteFileAtomically(FJournal, QJsonDocument(journal).toJson());
    SyncToDisk(FFolder.OldFiles());
    SyncToDisk(FFolder.Path());
}

void TUpdateInstaller::TReplacement::MoveIn()
{
    for (const QString& folder : FNewFolders) {
        Step(u"make the folder "_s + folder);
        CreateFolder(FFolder.PathOf(folder));
    }
    for (const TEntry& entry : FEntries) {
        Step(u"move in "_s + entry.File.Target);
        MarkReadOnly(entry.Path, false);
        Rename(FFolder.StagedPath(entry.File.Target), entry.Path);
    }
    Step(u"sync the folders"_s);
    SyncFolders();
}

// Settles the update by a rename of the journal, because a rename is atomic. The recorded version could not
// show that an update is settled, because the version stays the same when files of the installed release are
// repaired.
void TUpdateInstaller::TReplacement::Settle()
{
    Step(u"settle the update"_s);
    Rename(FJournal, FSettled);
}

// Cleans up after Settle(). If the cleaning is cut off, Recover() repeats it. Once the journal is removed,
// Recover() only removes the old files.
void TUpdateInstaller::TReplacement::Finish()
{
    Step(u"mark files as read-only again"_s);
    MarkAsBefore();
    Step(u"record the version"_s);
    SyncToDisk(FFolder.OldFiles()); // makes Settle() durable; a failure in Settle() would undo the update
    FFolder.RecordAcceptedVersion(FVersion);
    SyncToDisk(FFolder.Path());
    Step(u"remove the journal"_s);
    if (!QFile::remove(FSettled))
        return;
    Step(u"remove the old files"_s);
    RemoveTree(FFolder.OldFiles());
}

// Puts the old files back. If this is cut off, Recover() repeats it. If there is no journal, no file was
// replaced and no file is put back.
void TUpdateInstaller::TReplacement::Undo()
{
    if (FileExists(FJournal)) {
        for (const TEntry& entry : FEntries) {
            Step(u"put back "_s + entry.File.Target);
            if (FileExists(entry.Kept)) {
                // A file that was not replaced is left alone. The file may be the running program, which
                // Windows does not allow to be replaced.
                if (FileExists(entry.Path) && FileSha256(entry.Path) == FileSha256(entry.Kept))
                    continue;
                MarkReadOnly(entry.Path, false);
                Rename(entry.Kept, entry.Path);
            } else if (!entry.Replaces && IsIn(entry))
                QFile::remove(entry.Path);
        }
        for (auto folder = FNewFolders.crbegin(); folder != FNewFolders.crend(); ++folder)
            QDir().rmdir(FFolder.PathOf(*folder)); // fails if the folder holds other files by now
        SyncFolders();
        MarkAsBefore();
        Step(u"remove the journal of what was put back"_s);
        QFile::remove(FJournal);
    }
    RemoveTree(FFolder.OldFiles());
}

// Gives the files the read-only marks that the old files had. Call this last, because a marked file can be
// neither synced nor replaced.
void TUpdateInstaller::TReplacement::MarkAsBefore() const
{
    for (const TEntry& entry : FEntries)
        if (entry.ReadOnly)
            MarkReadOnly(entry.Path, true);
}

bool TUpdateInstaller::TReplacement::IsAllIn() const
{
    return std::all_of(FEntries.begin(), FEntries.end(), [this](const TEntry& entry) { return IsIn(entry); });
}

bool TUpdateInstaller::TReplacement::IsIn(const TEntry& entry) const
{
    try {
        VerifyFile(entry.Path, entry.File.Target, entry.File.Size, entry.File.Sha256);
        return true;
    } catch (const TError&) {
        return false;
    }
}

void TUpdateInstaller::TReplacement::SyncFolders() const
{
    QStringList folders;
    for (const TEntry& entry : FEntries)
        folders.append(QFileInfo(entry.Path).path());
    for (const QString& folder : FNewFolders) { // the name of a folder is stored in the folder around it
        const QString path = FFolder.PathOf(folder);
        folders << path << QFileInfo(path).path();
    }
    folders.removeDuplicates();
    for (const QString& folder : std::as_const(folders))
        if (FolderExists(folder)) // Undo() has removed the new folders
            SyncToDisk(folder);
}

void TUpdateInstaller::Install(const TStagedUpdate& update, const QString& executable)
{
    const QString step = u"Install version %1"_s.arg(update.Version);
    const auto dropStaging = qScopeGuard([this] { FFolder.DropStaging(); });
    try {
        Replace(update, executable);
        FFolder.Log().Write(step, u"done"_s);
    } catch (const TError& error) {
        FFolder.Log().Write(step, u"failed. "_s + error.Text());
        throw;
    }
}

void TUpdateInstaller::Replace(const TStagedUpdate& update, const QString& executable)
{
    Recover();
    TReplacement replacement(*this, update, executable);
    replacement.Verify();
    FFolder.Log().Write(u"Verify the new files"_s, u"they are as published"_s);
    try {
        replacement.KeepOld();
        replacement.WriteJournal();
        replacement.MoveIn();
        replacement.Settle();
    } catch (const TError& error) {
        try {
            replacement.Undo();
        } catch (const TError& second) {
            throw TError(error.Kind(),
                u"%1. The old files could not be put back either (%2); the next start tries it "
                "again"_s.arg(error.Text(), second.Text()));
        }
        throw;
    }
    try {
        replacement.Finish();
    } catch (const TError& error) {
        FFolder.Log().Write(u"Record the version"_s, error.Text() + u". The next start tries it again"_s);
    }
    for (const TUpdateFile& file : update.Files)
        FFolder.Log().Write(u"Replace "_s + file.Target, u"done"_s);
}

TRecovery TUpdateInstaller::Recover()
{
    if (!FFolder.IsRecoveryDue())
        return TRecovery::NotNeeded;
    const QString oldFiles = FFolder.OldFiles();
    const bool isSettled = FileExists(oldFiles + SettledName);
    const QString journal = oldFiles + (isSettled ? SettledName : JournalName);
    if (!FileExists(journal)) { // the process was killed before the replacement began or after it had ended
        RemoveTree(oldFiles);
        return TRecovery::NotNeeded;
    }
    const QByteArray bytes = ReadFile(journal, u"read the journal"_s);
    TReplacement replacement = [&] {
        try {
            return TReplacement(*this, bytes);
        } catch (const TError& error) {
            if (error.Kind() == TErrorKind::BadInput)
                throw SetAside(FFolder, error);
            throw;
        }
    }();
    const bool completes = isSettled || replacement.IsAllIn();
    if (!completes)
        replacement.Undo();
    else if (!isSettled)
        replacement.Settle();
    if (completes)
        replacement.Finish();
    FFolder.Log().Write(CutOff, completes ? u"completed it"_s : u"put the old files back"_s);
    return completes ? TRecovery::Completed : TRecovery::Undone;
}

TRecovery RecoverUpdate(const TUpdateFolder& folder)
{
    const bool isDue = folder.IsRecoveryDue();
    if (!isDue && !folder.IsHandedOver())
        return TRecovery::NotNeeded;
    TUpdateLock lock;
    try {
        lock = folder.Lock();
        return TUpdateInstaller(folder).Recover();
    } catch (const TError& error) {
        if (!lock && error.Kind() == TErrorKind::Conflict)
            return TRecovery::BeingInstalled;
        if (!isDue)
            return TRecovery::NotNeeded;
        folder.Log().Write(CutOff, u"failed. "_s + error.Text());
        throw;
    }
}

} // namespace Corvadine
