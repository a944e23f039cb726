#include "support/update/rules/UpdateFolder.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/update/rules/UpdateSettings.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cassert>
#include <thread>

namespace Corvadine {

namespace {

constexpr QLatin1String Withdrawn { " withdrawn" };

// Returns the text of a record, or an empty text if the record is missing or cannot be read.
QString RecordedText(const QString& path)
{
    constexpr qint64 MostBytes = 64;
    QFile file(path);
    try {
        OpenForReading(file, u"read the record of updates"_s);
    } catch (const TError&) {
        return {};
    }
    return QString::fromLatin1(file.read(MostBytes)).trimmed();
}

TError InUse(const TUpdateFolder& folder)
{
    return { TErrorKind::Conflict,
        u"Another copy of Corvadine is being updated in %1; please wait until it has finished "
        "(it has locked CorvadineUpdate.lock)"_s.arg(QDir::toNativeSeparators(folder.Path())) };
}

TError NotWritable(const TUpdateFolder& folder, const QString& reason)
{
    return { TErrorKind::Io, u"update the program in"_s, QDir::toNativeSeparators(folder.Path()), reason };
}

TError Refusal(const std::error_code& error, const TUpdateFolder& folder)
{
    if (error == std::errc::device_or_resource_busy)
        return InUse(folder);
    const bool isForbidden =
        error == std::errc::permission_denied || error == std::errc::read_only_file_system;
    return NotWritable(folder, isForbidden ? u"the folder cannot be written"_s : SystemErrorText(error));
}

} // namespace

TUpdateFolder::TUpdateFolder(const QString& programFolder) : FPath(QDir::cleanPath(programFolder)) { }

void TUpdateFolder::CheckTarget(const QString& target) const
{
    QString path = FPath;
    const QStringList parts = target.split(u'/');
    for (qsizetype i = 0; i < parts.size(); ++i) {
        path += u'/' + parts[i];
        const QFileInfo info(path);
        if (info.isSymLink() || info.isJunction())
            throw TError(TErrorKind::Conflict, u"update"_s, path, u"it is a link"_s);
        if (!info.exists())
            return;
        const bool isLast = i + 1 == parts.size();
        if (isLast ? !info.isFile() : !info.isDir())
            throw TError(TErrorKind::Conflict, u"update"_s, path, u"something else has its name"_s);
    }
}

TUpdateLog TUpdateFolder::Log() const
{
    return TUpdateLog(PathOf(TUpdateSettings::LogFileName));
}

TVersion TUpdateFolder::AcceptedVersion() const
{
    return ParseVersion(RecordedText(Own(u"accepted"_s))).value_or(TVersion {});
}

void TUpdateFolder::RecordAcceptedVersion(const QString& version) const
{
    const auto accepted = ParseVersion(version);
    assert(accepted);
    const QString record = Own(u"accepted"_s);
    if (*accepted > AcceptedVersion())
        WriteFileAtomically(record, version.toLatin1() + '\n');
    CopyOwner(FPath, record);
}

TKnownRelease TUpdateFolder::KnownRelease() const
{
    QString text = RecordedText(Own(u"known"_s));
    const bool isWithdrawn = text.endsWith(Withdrawn);
    if (isWithdrawn)
        text.chop(Withdrawn.size());
    const auto version = ParseVersion(text);
    return version ? TKnownRelease { *version, isWithdrawn } : TKnownRelease {};
}

void TUpdateFolder::RecordKnownRelease(const TKnownRelease& release) const
{
    if (release <= KnownRelease())
        return;
    const QString text =
        VersionText(release.Version) + (release.IsWithdrawn ? QString(Withdrawn) : QString());
    WriteFileAtomically(Own(u"known"_s), text.toLatin1() + '\n');
}

void TUpdateFolder::WriteReport(const QString& text) const
{
    try {
        WriteFileAtomically(Own(u"report"_s), text.toUtf8());
    } catch (const TError&) {
        // The failure is ignored. The log has the text too, if the log can be written.
    }
}

QString TUpdateFolder::TakeReport() const
{
    const QString path = Own(u"report"_s);
    if (!FileExists(path))
        return {};
    try {
        const QByteArray text = ReadFile(path, u"read the report of the update"_s);
        // A report that cannot be removed is not returned, because it would be shown at every start.
        return QFile::remove(path) ? QString::fromUtf8(text) : QString();
    } catch (const TError&) {
        return {};
    }
}

TUpdateLock TUpdateFolder::Lock() const
{
    TUpdateLock lock = AwaitLock(std::chrono::milliseconds(200));
    constexpr qint64 MostSeconds = 60; // for the helper to get the lock after the hand-over
    const QFileInfo note(HandOverNote());
    if (note.exists() && qAbs(note.lastModified().secsTo(QDateTime::currentDateTime())) < MostSeconds)
        throw InUse(*this);
    return lock;
}

TUpdateLock TUpdateFolder::AwaitLock(std::chrono::milliseconds patience) const
{
    constexpr std::chrono::milliseconds Pause(20);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    auto lock = std::make_unique<TFileLock>(Own(u"lock"_s));
    while (const std::error_code error = lock->TryLock()) {
        // Windows also denies access to a lock file that is being deleted while another program reads it.
        const bool mayPass =
            error == std::errc::device_or_resource_busy || error == std::errc::permission_denied;
        if (!mayPass || std::chrono::steady_clock::now() >= deadline)
            throw Refusal(error, *this);
        std::this_thread::sleep_for(Pause);
    }
    return lock;
}

QString TUpdateFolder::Staging() const
{
    return QDir::cleanPath(PathOf(TUpdateSettings::TempDirectory) + u'/' + OwnPrefix + u"staging"_s);
}

void TUpdateFolder::MakeStaging() const
{
    RemoveStaging();
    // The folder is made first, and then gets its permissions. One step would do harm on Windows: mkdir()
    // with permissions would make a folder whose files stay closed to other users, even after the files were
    // moved out of the folder.
    if (!QDir().mkdir(Staging())
        || !QFile::setPermissions(Staging(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
        throw NotWritable(*this, u"the folder cannot be written"_s);
}

void TUpdateFolder::RemoveStaging() const
{
    UnmarkHandedOver(); // first, because files that cannot be removed must not look handed over
    if (const std::error_code error = RemoveTree(Staging()))
        throw TError(TErrorKind::Io, u"remove"_s, Staging(), SystemErrorText(error));
}

void TUpdateFolder::DropStaging() const
{
    try {
        RemoveStaging();
    } catch (const TError&) {
        // The failure is ignored, because the next check removes the folder.
    }
}

void TUpdateFolder::MarkHandedOver() const
{
    WriteFileAtomically(HandOverNote(), {});
}

void TUpdateFolder::UnmarkHandedOver() const
{
    QFile::remove(HandOverNote());
}

bool TUpdateFolder::IsHandedOver() const
{
    return FileExists(HandOverNote());
}

bool TUpdateFolder::IsRecoveryDue() const
{
    return FolderExists(OldFiles());
}

} // namespace Corvadine
