#include "support/UpdateInstaller.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/AcceptedVersion.h"
#include "support/InstallPlatform.h"
#include "support/StagedUpdate.h"
#include "support/UpdateLog.h"
#include "support/UpdateNames.h"

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

const QString OldFolderName = QStringLiteral("CorvadineUpdate.old");
const QString JournalName = QStringLiteral("journal");
const QString SettledName = QStringLiteral("journal.done"); // the journal once all files are in place

const QString CutOff = QStringLiteral("Find an update that was cut off"); // for the log
const QString DamagedFolderName = QStringLiteral("CorvadineUpdate.damaged");

QString OldFolderOf(const QString& programFolder)
{
    return programFolder + u'/' + OldFolderName;
}

std::filesystem::path StandardPath(const QString& path)
{
    return QFileInfo(path).filesystemAbsoluteFilePath();
}

void Rename(const QString& from, const QString& to)
{
    if (const std::error_code error = RenameOver(from, to))
        throw TError(TErrorKind::Io, QStringLiteral("replace"), to, SystemErrorText(error));
}

// A second name for the old file costs neither time nor space; where the file system has no such names it is
// copied.
void Keep(const QString& file, const QString& kept)
{
    std::error_code error;
    // All names of a file share the mark, which has to go before the file can be replaced.
    if (!IsMarkedReadOnly(file)) {
        std::filesystem::create_hard_link(StandardPath(file), StandardPath(kept), error);
        if (!error)
            return;
    }
    std::filesystem::copy_file(StandardPath(file), StandardPath(kept), error);
    if (error)
        throw TError(TErrorKind::Io, QStringLiteral("keep a copy of"), file, SystemErrorText(error));
    MarkReadOnly(kept, false);
    SyncToDisk(kept);
}

// The new file is as the old one was, but executable if the release says so, for those who may read it. A
// mark that would keep it from being moved in has to wait until it is.
void KeepAttributes(const QString& file, const QString& successor)
{
    constexpr int FromReadToExe = 2; // bits between QFile::ReadX and QFile::ExeX
    constexpr auto AnyRead = QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther;
    constexpr auto OfThisProcess =
        QFile::ReadUser | QFile::WriteUser | QFile::ExeUser; // root's are no file's
    QFile::Permissions permissions = QFile::permissions(file) & ~OfThisProcess;
    if (QFile::permissions(successor).testFlag(QFile::ExeOwner))
        permissions |= QFile::Permissions((permissions & AnyRead) >> FromReadToExe);
    if (IsMarkedReadOnly(file))
        permissions |= QFile::WriteOwner;
    CopyOwner(file, successor); // first: it may take permissions away
    QFile::setPermissions(successor, permissions);
}

// What to throw for a journal that nobody can follow. The files that it was about are kept for people.
TError SetAside(const QString& programFolder, const TError& error)
{
    const QString aside = programFolder + u'/' + DamagedFolderName;
    RemoveTree(aside);
    Rename(OldFolderOf(programFolder), aside);
    return { TErrorKind::BadInput,
        QStringLiteral(
            "%1; an update was cut off and cannot be undone, so please install Corvadine anew (the "
            "old files are in %2)")
            .arg(error.Text(), QDir::toNativeSeparators(aside)) };
}

// Those folders on the way to `target` that are still missing, the outermost first.
QStringList MissingFolders(const QString& programFolder, const QString& target)
{
    QStringList missing;
    for (qsizetype slash = target.indexOf(u'/'); slash >= 0; slash = target.indexOf(u'/', slash + 1))
        if (!FolderExists(programFolder + u'/' + target.left(slash)))
            missing.append(target.left(slash));
    return missing;
}

} // namespace

// One replacement, about to be made or read back from its journal.
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
    void Settle(); // from here on there is no way back
    void Finish();

    void Undo();

    // Whether every target is the new file.
    bool IsAllIn() const;

private:
    struct TEntry {
        QString StagedPath; // not in the journal: it takes no staged file to undo or to complete
        QString Target;
        qint64 Size = 0;
        QByteArray Sha256;
        bool Replaces = false; // there is an old file
        bool ReadOnly = false; // that one is marked so
    };

    QString InProgram(const QString& name) const { return FOwner.FProgramFolder + u'/' + name; }
    QString Kept(std::size_t index) const { return FOldFolder + u'/' + QString::number(index); }
    QString Journal() const { return FOldFolder + u'/' + JournalName; }
    QString Settled() const { return FOldFolder + u'/' + SettledName; }
    bool IsIn(const TEntry& entry) const;
    bool IsAsKept(std::size_t index) const;
    void MarkAsBefore() const;
    void SyncFolders() const;
    void Step(const QString& text) const
    {
        if (FOwner.BeforeStep)
            FOwner.BeforeStep(text);
    }

    const TUpdateInstaller& FOwner;
    QString FOldFolder;
    QString FVersion;
    std::vector<TEntry> FEntries;
    QStringList FNewFolders; // relative; an outer one before those in it
};

TUpdateInstaller::TReplacement::TReplacement(
    const TUpdateInstaller& owner, const TStagedUpdate& update, const QString& executable)
    : FOwner(owner), FOldFolder(OldFolderOf(owner.FProgramFolder)), FVersion(update.Version)
{
    for (const TStagedUpdateFile& file : update.Files) {
        const QString target = CheckedTarget(file.Target);
        CheckTargetOnDisk(owner.FProgramFolder, target);
        FEntries.push_back({ file.StagedPath, target, file.Size, file.Sha256, FileExists(InProgram(target)),
            IsMarkedReadOnly(InProgram(target)) });
        for (const QString& folder : MissingFolders(owner.FProgramFolder, target))
            if (!FNewFolders.contains(folder))
                FNewFolders.append(folder);
    }
    const QFileInfo program(executable);
    // The program last: one that is started in the middle is the old one then, and undoing suits it.
    std::stable_partition(FEntries.begin(), FEntries.end(),
        [&](const TEntry& entry) { return QFileInfo(InProgram(entry.Target)) != program; });
}

TUpdateInstaller::TReplacement::TReplacement(const TUpdateInstaller& owner, const QByteArray& journal)
    : FOwner(owner), FOldFolder(OldFolderOf(owner.FProgramFolder))
{
    const QJsonObject object = QJsonDocument::fromJson(journal).object();
    FVersion = object.value(u"version").toString();
    for (const QJsonValue value : object.value(u"files").toArray()) {
        const QString target = CheckedTarget(value[u"target"].toString());
        CheckTargetOnDisk(owner.FProgramFolder, target);
        FEntries.push_back({ {}, target, value[u"size"].toInteger(),
            QByteArray::fromHex(value[u"sha256"].toString().toLatin1()), value[u"replaces"].toBool(),
            value[u"readOnly"].toBool() });
    }
    for (const QJsonValue value : object.value(u"newFolders").toArray())
        FNewFolders.append(CheckedTarget(value.toString()));
    if (FEntries.empty())
        throw TError(TErrorKind::BadInput, QStringLiteral("read"), Journal(),
            QStringLiteral("it is no journal of an update"));
}

void TUpdateInstaller::TReplacement::Verify()
{
    for (const TEntry& entry : FEntries) {
        Step(QStringLiteral("verify ") + entry.Target);
        VerifyFile(entry.StagedPath, entry.Target, entry.Size, entry.Sha256);
    }
}

// Ends with both the old and the new files safely on disk.
void TUpdateInstaller::TReplacement::KeepOld()
{
    Step(QStringLiteral("make the folder for the old files"));
    CreateFolder(FOldFolder);
    for (std::size_t i = 0; i < FEntries.size(); ++i) {
        const TEntry& entry = FEntries[i];
        Step(QStringLiteral("keep the old ") + entry.Target);
        if (entry.Replaces) {
            Keep(InProgram(entry.Target), Kept(i));
            KeepAttributes(InProgram(entry.Target), entry.StagedPath);
        }
        SyncToDisk(entry.StagedPath);
    }
}

void TUpdateInstaller::TReplacement::WriteJournal()
{
    QJsonArray files;
    for (const TEntry& entry : FEntries)
        files.append(QJsonObject { { QStringLiteral("target"), entry.Target },
            { QStringLiteral("size"), entry.Size },
            { QStringLiteral("sha256"), QString::fromLatin1(entry.Sha256.toHex()) },
            { QStringLiteral("replaces"), entry.Replaces }, { QStringLiteral("readOnly"), entry.ReadOnly } });
    const QJsonObject journal { { QStringLiteral("version"), FVersion }, { QStringLiteral("files"), files },
        { QStringLiteral("newFolders"), QJsonArray::fromStringList(FNewFolders) } };
    Step(QStringLiteral("write the journal"));
    WriteFileAtomically(Journal(), QJsonDocument(journal).toJson());
    SyncToDisk(FOldFolder);
    SyncToDisk(FOwner.FProgramFolder);
}

void TUpdateInstaller::TReplacement::MoveIn()
{
    for (const QString& folder : FNewFolders) {
        Step(QStringLiteral("make the folder ") + folder);
        CreateFolder(InProgram(folder));
    }
    for (const TEntry& entry : FEntries) {
        Step(QStringLiteral("move in ") + entry.Target);
        MarkReadOnly(InProgram(entry.Target), false);
        Rename(entry.StagedPath, InProgram(entry.Target));
    }
    Step(QStringLiteral("sync the folders"));
    SyncFolders();
}

// A name, since that is one step. The recorded version would not do: it stays the same when files of the
// installed release are repaired.
void TUpdateInstaller::TReplacement::Settle()
{
    Step(QStringLiteral("settle the update"));
    Rename(Journal(), Settled());
}

// Can be cut off anywhere and begun again; old files without a journal are removed at the next start.
void TUpdateInstaller::TReplacement::Finish()
{
    Step(QStringLiteral("mark files as read-only again"));
    MarkAsBefore();
    Step(QStringLiteral("record the version"));
    SyncToDisk(FOldFolder); // not earlier: what fails once it is settled must not be undone
    RecordAcceptedVersion(FOwner.FProgramFolder, FVersion);
    CopyOwner(FOwner.FProgramFolder, FOwner.FProgramFolder + u'/' + TUpdateSettings::AcceptedFileName);
    SyncToDisk(FOwner.FProgramFolder);
    Step(QStringLiteral("remove the journal"));
    if (!QFile::remove(Settled()))
        return;
    Step(QStringLiteral("remove the old files"));
    RemoveTree(FOldFolder);
}

// Can be cut off anywhere and begun again. Before the journal was written there is nothing to put back.
void TUpdateInstaller::TReplacement::Undo()
{
    if (FileExists(Journal())) {
        for (std::size_t i = 0; i < FEntries.size(); ++i) {
            const TEntry& entry = FEntries[i];
            Step(QStringLiteral("put back ") + entry.Target);
            if (FileExists(Kept(i))) {
                if (IsAsKept(i)) // the running program, for one, of which Windows lets nobody rename the file
                    continue;
                MarkReadOnly(InProgram(entry.Target), false);
                Rename(Kept(i), InProgram(entry.Target));
            } else if (!entry.Replaces && IsIn(entry))
                QFile::remove(InProgram(entry.Target));
        }
        for (auto folder = FNewFolders.crbegin(); folder != FNewFolders.crend(); ++folder)
            QDir().rmdir(InProgram(*folder)); // refuses one that somebody uses meanwhile
        SyncFolders();
        MarkAsBefore();
        Step(QStringLiteral("remove the journal of what was put back"));
        QFile::remove(Journal());
    }
    RemoveTree(FOldFolder);
}

// Not earlier: a file that is so marked can be neither synced nor replaced.
void TUpdateInstaller::TReplacement::MarkAsBefore() const
{
    for (const TEntry& entry : FEntries)
        if (entry.ReadOnly)
            MarkReadOnly(InProgram(entry.Target), true);
}

bool TUpdateInstaller::TReplacement::IsAllIn() const
{
    return std::all_of(FEntries.begin(), FEntries.end(), [this](const TEntry& entry) { return IsIn(entry); });
}

bool TUpdateInstaller::TReplacement::IsIn(const TEntry& entry) const
{
    try {
        VerifyFile(InProgram(entry.Target), entry.Target, entry.Size, entry.Sha256);
        return true;
    } catch (const TError&) {
        return false;
    }
}

// Whether the old file is still in its place, or again.
bool TUpdateInstaller::TReplacement::IsAsKept(std::size_t index) const
{
    const QString target = InProgram(FEntries[index].Target);
    return FileExists(target) && FileSha256(target) == FileSha256(Kept(index));
}

void TUpdateInstaller::TReplacement::SyncFolders() const
{
    QStringList folders;
    for (const TEntry& entry : FEntries)
        folders.append(QFileInfo(InProgram(entry.Target)).path());
    for (const QString& folder : FNewFolders) // whose names stand in the folders around them
        folders << InProgram(folder) << QFileInfo(InProgram(folder)).path();
    folders.removeDuplicates();
    for (const QString& folder : std::as_const(folders))
        if (FolderExists(folder)) // Undo() has removed the new ones
            SyncToDisk(folder);
}

TUpdateInstaller::TUpdateInstaller(const QString& programFolder, const TUpdateLog& log)
    : FProgramFolder(QDir::cleanPath(programFolder)), FLog(log)
{
}

void TUpdateInstaller::Install(const TStagedUpdate& update, const QString& executable)
{
    const QString step = QStringLiteral("Install version %1").arg(update.Version);
    const auto dropStaging = qScopeGuard([this] { DropStaging(FProgramFolder); });
    try {
        Replace(update, executable);
        FLog.Write(step, QStringLiteral("done"));
    } catch (const TError& error) {
        FLog.Write(step, QStringLiteral("failed. ") + error.Text());
        throw;
    }
}

void TUpdateInstaller::Replace(const TStagedUpdate& update, const QString& executable)
{
    Recover();
    TReplacement replacement(*this, update, executable);
    replacement.Verify();
    FLog.Write(QStringLiteral("Verify the new files"), QStringLiteral("they are as published"));
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
                QStringLiteral("%1. The old files could not be put back either (%2); the next start tries it "
                               "again")
                    .arg(error.Text(), second.Text()));
        }
        throw;
    }
    try {
        replacement.Finish();
    } catch (const TError& error) {
        FLog.Write(QStringLiteral("Record the version"),
            error.Text() + QStringLiteral(". The next start tries it again"));
    }
    for (const TStagedUpdateFile& file : update.Files)
        FLog.Write(QStringLiteral("Replace ") + file.Target, QStringLiteral("done"));
}

TRecovery TUpdateInstaller::Recover()
{
    if (!IsRecoveryDue(FProgramFolder))
        return TRecovery::NotNeeded;
    const QString oldFolder = OldFolderOf(FProgramFolder);
    const bool isSettled = FileExists(oldFolder + u'/' + SettledName);
    const QString journal = oldFolder + u'/' + (isSettled ? SettledName : JournalName);
    if (!FileExists(journal)) { // killed before it began, or after it had ended
        RemoveTree(oldFolder);
        return TRecovery::NotNeeded;
    }
    const QByteArray bytes = ReadFile(journal, QStringLiteral("read the journal"));
    TReplacement replacement = [&] {
        try {
            return TReplacement(*this, bytes);
        } catch (const TError& error) {
            if (error.Kind() == TErrorKind::BadInput)
                throw SetAside(FProgramFolder, error);
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
    FLog.Write(CutOff, completes ? QStringLiteral("completed it") : QStringLiteral("put the old files back"));
    return completes ? TRecovery::Completed : TRecovery::Undone;
}

void DropStaging(const QString& programFolder)
{
    try {
        RemoveStaging(programFolder);
    } catch (const TError&) {
        // The next check removes it.
    }
}

bool IsRecoveryDue(const QString& programFolder)
{
    return FolderExists(OldFolderOf(programFolder));
}

TRecovery RecoverUpdate(const QString& programFolder)
{
    const bool isDue = IsRecoveryDue(programFolder);
    if (!isDue && !IsHandedOver(programFolder))
        return TRecovery::NotNeeded;
    const TUpdateLog log(programFolder);
    std::optional<TUpdateLock> lock;
    try {
        lock.emplace(programFolder);
        return TUpdateInstaller(programFolder, log).Recover();
    } catch (const TError& error) {
        if (!lock && error.Kind() == TErrorKind::Conflict)
            return TRecovery::BeingInstalled;
        if (!isDue)
            return TRecovery::NotNeeded;
        log.Write(CutOff, QStringLiteral("failed. ") + error.Text());
        throw;
    }
}

} // namespace Corvadine
