#include "project/Backups.h"

#include "base/Error.h"
#include "base/PathRules.h"
#include "base/StagedFile.h"
#include "base/SystemFiles.h"
#include "project/ProjectDocument.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <map>
#include <span>

namespace Corvadine {

namespace {

constexpr qsizetype StampLength = 14; // YYYYMMDDHHNNSS

// Returns the part of a copy's name before the time. Only five characters are cut off, so the full stop of
// ".dproj" stays.
QString StemOf(const QString& projectFile)
{
    const QString name = FileNameOf(projectFile);
    return name.left(std::max(name.size() - 5, qsizetype { 0 }));
}

QString NameWithStamp(const QString& projectFile, const QString& stamp)
{
    return StemOf(projectFile) + stamp + ExtensionOf(projectFile);
}

QString NameAt(const QString& projectFile, const QDateTime& time)
{
    return NameWithStamp(projectFile, time.toString(u"yyyyMMddHHmmss"_s));
}

// Returns the time in the name of a copy of `projectFile`, or an invalid time for any other name. Does not
// check whether this local time existed: a change of time zone or the hour skipped in spring must not hide
// a backup.
QDateTime TimeIn(const QString& name, const QString& projectFile)
{
    const QString stamp = name.mid(StemOf(projectFile).size(), StampLength);
    const QDate date = QDate::fromString(stamp.left(8), u"yyyyMMdd"_s);
    const QTime time = QTime::fromString(stamp.mid(8), u"HHmmss"_s);
    const bool isName =
        date.isValid() && time.isValid() && IsSameFileName(name, NameWithStamp(projectFile, stamp));
    return isName ? QDateTime(date, time) : QDateTime();
}

QByteArray HashOf(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

QByteArray ReadBackup(const QString& path)
{
    return ReadFile(path, u"read the backup"_s);
}

// Returns the reason why `bytes` are no project file, or an empty text if they are one.
QString FaultIn(const QByteArray& bytes, const QString& file)
{
    try {
        const TProjectDocument document(bytes, file);
        return {};
    } catch (const TError& error) {
        return error.Reason();
    }
}

QString GuidIn(const QByteArray& bytes, const QString& file)
{
    try {
        return TProjectDocument(bytes, file).ProjectGuid();
    } catch (const TError&) {
        return {};
    }
}

// The result of a comparison of a copy with its records.
struct TJudgment {
    const TBackupRecord* Record; // the last record that describes the content, or else the last record
    QString Fault;               // why the copy cannot be read, or differs from all records; empty if whole
};

// Judges the copy at `path` by its records. REQUIRES: there is a record.
TJudgment Judge(const QString& path, std::span<const TBackupRecord> records)
{
    try {
        const QByteArray hash = HashOf(ReadBackup(path));
        for (std::size_t i = records.size(); i-- > 0;)
            if (records[i].Sha256 == hash)
                return { &records[i], {} };
        return { &records.back(), u"its content is not what was kept"_s };
    } catch (const TError& error) {
        return { &records.back(), error.Reason() };
    }
}

bool IsWhole(const QString& path, const TBackupRecord& record)
{
    return Judge(path, { &record, 1 }).Fault.isEmpty();
}

TError RestoreRefusal(TErrorKind kind, const QString& file, const QString& reason)
{
    return { kind, u"restore"_s, file, reason };
}

bool IsOlder(const TBackup& a, const TBackup& b)
{
    return a.Time < b.Time;
}

// Returns the records of `projectFile` for each name, in the order in which they were written.
std::map<QString, std::vector<TBackupRecord>> RecordsByName(
    const std::vector<TBackupRecord>& records, const QString& projectFile)
{
    std::map<QString, std::vector<TBackupRecord>> byName;
    for (const TBackupRecord& record : records)
        if (IsSameFileName(record.ProjectFile, projectFile))
            byName[record.Name].push_back(record);
    return byName;
}

bool IsNewer(const TBackupRecord& a, const TBackupRecord& b)
{
    return a.Time != b.Time ? a.Time > b.Time : a.Number > b.Number;
}

} // namespace

struct TBackups::TChoice {
    QString Path;
    QByteArray Bytes;
};

TBackups::TBackups(const QString& folder, const QString& database, std::chrono::milliseconds busyTimeout)
    : FFolder(WithTrailingDelimiter(folder)), FDatabase(database), FBusyTimeout(busyTimeout)
{
}

TBackups::~TBackups() = default;

QString TBackups::Keep(const QString& projectFile, const QByteArray& bytes, const QDateTime& time,
    TBackupReason reason, TKeep keep)
{
    const TNewFolder folder = NewFolder();
    TBackupRecord record { {}, projectFile, GuidIn(bytes, projectFile), HashOf(bytes),
        time.toOffsetFromUtc(time.offsetFromUtc()), reason };
    if (keep == TKeep::Once) {
        record.Name = EqualCopy(record);
        // If another program removes the copy at this moment, a new copy is made below.
        if (!record.Name.isEmpty() && Index().Add(record) && FileExists(PathOf(record.Name)))
            return PathOf(record.Name);
    }
    for (qint64 later = 0;; ++later) {
        record.Name = NameAt(projectFile, time.addSecs(later));
        if (keep == TKeep::Always && IsOfThisSecond(record)) {
            TStagedFile staged(PathOf(record.Name), bytes, projectFile);
            // The new record is added before the copy is replaced, and the old record stays. So a process
            // that is killed in between leaves the old copy with the old record, which describes it.
            if (Index().Add(record)) {
                staged.Commit();
                return PathOf(record.Name);
            }
        }
        if (WriteRecorded(record, bytes))
            return PathOf(record.Name);
    }
}

QString TBackups::KeepUnrecorded(const QString& projectFile, const QByteArray& bytes, const QDateTime& time)
{
    const TNewFolder folder = NewFolder();
    for (qint64 later = 0;; ++later) {
        QString path = PathOf(NameAt(projectFile, time.addSecs(later)));
        if (!QFileInfo::exists(path) && TStagedFile(path, bytes, projectFile).CommitIfNew())
            return path;
    }
}

std::vector<TBackup> TBackups::List(const QString& projectFile) const
{
    const std::vector<TBackupRecord> records = Index().Records();
    std::vector<TBackup> backups;
    for (const auto& [name, ofCopy] : RecordsByName(records, projectFile)) {
        if (!FileExists(PathOf(name)))
            continue;
        const auto [record, fault] = Judge(PathOf(name), ofCopy);
        backups.push_back({ name, PathOf(name), record->Time, record->Reason, fault });
    }

    QSet<QString> recorded;
    for (const TBackupRecord& record : records)
        recorded.insert(record.Name);
    for (const QString& name : QDir(FFolder).entryList(QDir::Files | QDir::Hidden)) {
        const QDateTime time = TimeIn(name, projectFile);
        if (time.isValid() && !recorded.contains(name))
            backups.push_back({ name, PathOf(name), time, {}, {} });
    }
    std::stable_sort(backups.begin(), backups.end(), IsOlder);
    return backups;
}

TRestoredBackup TBackups::Restore(const QString& projectFile, const TRestoreOrder& order)
{
    const TBackupReason reason = order.IsUndo ? TBackupReason::BeforeRestore : TBackupReason::Update;
    const TChoice choice =
        order.Name.isEmpty() ? ChooseNewest(projectFile, reason) : ChooseByName(projectFile, order);
    const bool isThere = FileExists(projectFile);
    const QString attempt = u"read the project file"_s;
    const QByteArray present = isThere ? ReadFile(projectFile, attempt) : QByteArray();
    TRestoredBackup restored { choice.Path, {}, false };
    if (isThere && present == choice.Bytes)
        return restored;

    TStagedFile staged(projectFile, choice.Bytes, isThere ? QString() : choice.Path);
    if (isThere)
        restored.SavedPath = Keep(projectFile, present, order.Now, TBackupReason::BeforeRestore);
    // The comparison comes last, so that other programs have hardly any time to change the file unseen.
    if (isThere && ReadFile(projectFile, attempt) == present)
        staged.Commit();
    else if (isThere || !staged.CommitIfNew())
        throw RestoreRefusal(
            TErrorKind::Conflict, projectFile, u"another program has changed it meanwhile"_s);
    restored.IsWritten = true;
    return restored;
}

QStringList TBackups::Prune(const QString& projectFile, int kept)
{
    std::vector<std::vector<TBackupRecord>> copies;
    for (auto& [name, ofCopy] : RecordsByName(Index().Records(), projectFile))
        copies.push_back(std::move(ofCopy));
    std::sort(copies.begin(), copies.end(),
        [](const auto& a, const auto& b) { return IsNewer(a.back(), b.back()); });
    QStringList removed;
    for (int whole = 0; const auto& ofCopy : copies) {
        const TBackupRecord& last = ofCopy.back();
        const QString path = PathOf(last.Name);
        if (whole < kept) {
            whole += Judge(path, ofCopy).Fault.isEmpty() ? 1 : 0;
            continue;
        }
        const bool isThere = FileExists(path);
        const bool isRemoved = Index().Remove(last, [&] {
            if (const std::error_code error = RemoveEntry(path); error && FileExists(path))
                throw TError(TErrorKind::Io, u"remove the backup"_s, path, SystemErrorText(error));
        });
        if (isThere && isRemoved)
            removed.append(last.Name);
    }
    return removed;
}

TNewFolder TBackups::NewFolder() const
{
    if (FFolder.isEmpty()) // an empty text would mean the current folder
        throw TError(TErrorKind::Usage, u"No folder for backups was given"_s);
    return TNewFolder(FFolder.chopped(1)); // without the delimiter
}

TBackupIndex& TBackups::Index() const
{
    if (!FIndex)
        FIndex = std::make_unique<TBackupIndex>(FDatabase, FBusyTimeout);
    return *FIndex;
}

QString TBackups::PathOf(const QString& name) const
{
    return FFolder + name;
}

// Returns the name of a whole copy of the same project file with the same content as in `record`. Returns an
// empty name if there is no such copy.
QString TBackups::EqualCopy(const TBackupRecord& record) const
{
    for (const TBackupRecord& kept : Index().Records())
        if (IsSameFileName(kept.ProjectFile, record.ProjectFile) && kept.Sha256 == record.Sha256
            && IsWhole(PathOf(kept.Name), kept))
            return kept.Name;
    return {};
}

// Whether there is a copy with the name of `record`, and all records of this name have the same project and
// second as `record`. When a local time comes twice, as in autumn, it counts as two different seconds.
bool TBackups::IsOfThisSecond(const TBackupRecord& record) const
{
    if (!FileExists(PathOf(record.Name)))
        return false;
    bool isRecorded = false;
    for (const TBackupRecord& other : Index().Records()) {
        if (!IsSameFileName(other.Name, record.Name))
            continue;
        if (!IsSameFileName(other.ProjectFile, record.ProjectFile)
            || other.Time.toSecsSinceEpoch() != record.Time.toSecsSinceEpoch())
            return false;
        isRecorded = true;
    }
    return isRecorded;
}

// Writes the record before the copy. A process that is killed in between leaves a record without a copy, and
// List() skips such a record. Returns false, with nothing left behind, if the name is taken.
bool TBackups::WriteRecorded(const TBackupRecord& record, const QByteArray& bytes)
{
    const QString path = PathOf(record.Name);
    if (QFileInfo::exists(path))
        return false;
    const std::optional<std::int64_t> number = Index().Reserve(record);
    if (!number)
        return false;
    try {
        // A project may hold passwords, so its copy is never open to more users than the project.
        if (TStagedFile(path, bytes, record.ProjectFile).CommitIfNew())
            return true;
    } catch (const TError&) {
        Index().Withdraw(record, *number);
        throw;
    }
    Index().Withdraw(record, *number);
    return false;
}

TBackups::TChoice TBackups::ChooseNewest(const QString& projectFile, TBackupReason reason) const
{
    std::vector<TBackupRecord> records = Index().Records();
    std::sort(records.begin(), records.end(), IsNewer);
    for (const TBackupRecord& record : records) {
        const QString path = PathOf(record.Name);
        if (record.Reason != reason || !IsSameFileName(record.ProjectFile, projectFile)
            || !IsWhole(path, record))
            continue;
        // The window makes the backup before it parses the file. So a backup that was made before an update
        // may hold something else than a project file.
        const QByteArray bytes = ReadBackup(path);
        if (reason == TBackupReason::BeforeRestore || FaultIn(bytes, record.Name).isEmpty())
            return { path, bytes };
    }
    const auto backups = List(projectFile);
    const auto unknown =
        std::count_if(backups.cbegin(), backups.cend(), [](const TBackup& backup) { return !backup.Reason; });
    QString text = u"there is no backup of it in %1"_s.arg(FFolder);
    if (reason == TBackupReason::BeforeRestore)
        text = u"no restore of it has made a backup in %1"_s.arg(FFolder);
    else if (unknown > 0)
        text +=
            u" that is known to be of this path; those without a record can be restored by name with --force"_s;
    throw RestoreRefusal(TErrorKind::Io, projectFile, text);
}

TBackups::TChoice TBackups::ChooseByName(const QString& projectFile, const TRestoreOrder& order) const
{
    const QString& name = order.Name;
    if (FileNameOf(name) != name)
        throw RestoreRefusal(
            TErrorKind::Usage, projectFile, u"%1 is a path, not the name of a backup"_s.arg(name));
    if (!IsSameFileName(ExtensionOf(name), ExtensionOf(projectFile)) || !FileExists(PathOf(name)))
        throw RestoreRefusal(TErrorKind::Io, projectFile, u"it has no backup %1"_s.arg(name));
    const QByteArray bytes = ReadBackup(PathOf(name));
    const QString fault = FaultIn(bytes, name);
    if (!fault.isEmpty() && !order.IsForced)
        throw RestoreRefusal(
            TErrorKind::BadInput, projectFile, u"the backup %1 is damaged: %2"_s.arg(name, fault));

    const QByteArray hash = HashOf(bytes);
    QString doubt = u"nothing is recorded of the backup %1"_s.arg(name);
    for (const TBackupRecord& record : Index().Records()) {
        if (!IsSameFileName(record.Name, name))
            continue;
        const bool isOfFile = IsSameFileName(record.ProjectFile, projectFile);
        doubt = isOfFile ? u"the content of the backup %1 is not what was kept"_s.arg(name)
                         : u"the backup %1 was made of %2"_s.arg(name, record.ProjectFile);
        if (isOfFile && record.Sha256 == hash) {
            doubt.clear();
            break;
        }
    }
    if (!doubt.isEmpty() && !order.IsForced)
        throw RestoreRefusal(
            TErrorKind::Conflict, projectFile, u"%1; --force restores it all the same"_s.arg(doubt));
    return { PathOf(name), bytes };
}

} // namespace Corvadine
