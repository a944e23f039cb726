#include "project/Backups.h"

#include "base/Error.h"
#include "base/Files.h"
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

// Returns the reason why the copy at `path` cannot be read or differs from its record. Returns an empty text
// if the copy is whole.
QString DamageOf(const QString& path, const TBackupRecord& record)
{
    try {
        return HashOf(ReadBackup(path)) == record.Sha256 ? QString() : u"its content is not what was kept"_s;
    } catch (const TError& error) {
        return error.Reason();
    }
}

TError RestoreRefusal(TErrorKind kind, const QString& file, const QString& reason)
{
    return { kind, u"restore"_s, file, reason };
}

bool IsOlder(const TBackup& a, const TBackup& b)
{
    return a.Time < b.Time;
}

// Returns the last record of each name. Considers only the records of `projectFile`.
std::map<QString, TBackupRecord> LastRecordsOf(
    const std::vector<TBackupRecord>& records, const QString& projectFile)
{
    std::map<QString, TBackupRecord> last;
    for (const TBackupRecord& record : records)
        if (IsSameFileName(record.ProjectFile, projectFile))
            last[record.Name] = record;
    return last;
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
    if (FFolder.isEmpty()) // an empty text would mean the current folder
        throw TError(TErrorKind::Usage, u"No folder for backups was given"_s);
    const TNewFolder folder(FFolder.chopped(1)); // without the delimiter
    TBackupRecord record { {}, projectFile, GuidIn(bytes, projectFile), HashOf(bytes),
        time.toOffsetFromUtc(time.offsetFromUtc()), reason };
    if (keep == TKeep::Once) {
        record.Name = EqualCopy(record);
        if (!record.Name.isEmpty()) {
            Index().Add(record);
            return PathOf(record.Name);
        }
    }
    for (qint64 later = 0;; ++later) {
        record.Name = NameAt(projectFile, time.addSecs(later));
        if (keep == TKeep::Always && IsOwn(record.Name, projectFile)) {
            TStagedFile(PathOf(record.Name), bytes, projectFile).Commit();
            Index().Add(record);
            return PathOf(record.Name);
        }
        if (WriteRecorded(record, bytes))
            return PathOf(record.Name);
    }
}

QString TBackups::KeepUnrecorded(const QString& projectFile, const QByteArray& bytes, const QDateTime& time)
{
    const TNewFolder folder(FFolder.chopped(1)); // without the delimiter
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
    for (const auto& [name, record] : LastRecordsOf(records, projectFile))
        if (FileExists(PathOf(name)))
            backups.push_back(
                { name, PathOf(name), record.Time, record.Reason, DamageOf(PathOf(name), record) });

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
    std::vector<TBackupRecord> records;
    for (const auto& [name, record] : LastRecordsOf(Index().Records(), projectFile))
        records.push_back(record);
    std::stable_sort(records.begin(), records.end(),
        [](const TBackupRecord& a, const TBackupRecord& b) { return a.Time > b.Time; });
    QStringList removed;
    for (std::size_t i = static_cast<std::size_t>(kept); i < records.size(); ++i) {
        const QString& name = records[i].Name;
        if (const std::error_code error = RemoveEntry(PathOf(name)); error && FileExists(PathOf(name)))
            throw TError(TErrorKind::Io, u"remove the backup"_s, PathOf(name), SystemErrorText(error));
        Index().Remove(name);
        removed.append(name);
    }
    return removed;
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
    for (const auto& [name, kept] : LastRecordsOf(Index().Records(), record.ProjectFile))
        if (kept.Sha256 == record.Sha256 && DamageOf(PathOf(name), kept).isEmpty())
            return name;
    return {};
}

// Whether there is a copy of this name, and it was made of `projectFile`.
bool TBackups::IsOwn(const QString& name, const QString& projectFile) const
{
    return QFileInfo::exists(PathOf(name)) && LastRecordsOf(Index().Records(), projectFile).contains(name);
}

// Writes the record before the copy. A process that is killed in between leaves a record without a copy, and
// List() skips such a record. Returns false, with nothing left behind, if the name is taken.
bool TBackups::WriteRecorded(const TBackupRecord& record, const QByteArray& bytes)
{
    const QString path = PathOf(record.Name);
    if (QFileInfo::exists(path) || !Index().Reserve(record))
        return false;
    try {
        // A project may hold passwords, so its copy is never open to more users than the project.
        if (TStagedFile(path, bytes, record.ProjectFile).CommitIfNew())
            return true;
    } catch (const TError&) {
        Index().Remove(record.Name);
        throw;
    }
    Index().Remove(record.Name);
    return false;
}

TBackups::TChoice TBackups::ChooseNewest(const QString& projectFile, TBackupReason reason) const
{
    std::vector<TBackupRecord> records = Index().Records();
    std::stable_sort(records.begin(), records.end(),
        [](const TBackupRecord& a, const TBackupRecord& b) { return a.Time < b.Time; });
    std::reverse(records.begin(), records.end()); // among equal times, the record written last comes first
    for (const TBackupRecord& record : records) {
        const QString path = PathOf(record.Name);
        if (record.Reason != reason || !IsSameFileName(record.ProjectFile, projectFile)
            || !DamageOf(path, record).isEmpty())
            continue;
        // The window makes the backup before it parses the file, so the backup of an update may be no
        // project file.
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

    const std::vector<TBackupRecord> records = Index().Records();
    const TBackupRecord* record = nullptr;
    for (const TBackupRecord& candidate : records)
        if (IsSameFileName(candidate.Name, name))
            record = &candidate;
    QString doubt;
    if (!record)
        doubt = u"nothing is recorded of the backup %1"_s.arg(name);
    else if (!IsSameFileName(record->ProjectFile, projectFile))
        doubt = u"the backup %1 was made of %2"_s.arg(name, record->ProjectFile);
    else if (HashOf(bytes) != record->Sha256)
        doubt = u"the content of the backup %1 is not what was kept"_s.arg(name);
    if (!doubt.isEmpty() && !order.IsForced)
        throw RestoreRefusal(
            TErrorKind::Conflict, projectFile, u"%1; --force restores it all the same"_s.arg(doubt));
    return { PathOf(name), bytes };
}

} // namespace Corvadine
