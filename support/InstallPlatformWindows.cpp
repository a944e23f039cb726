#include "support/InstallPlatform.h"

#include "base/Error.h"
#include "base/WindowsPath.h"
#include "base/WindowsRetry.h"

#include <QDir>
#include <QFileInfo>

#include <qt_windows.h>

namespace Corvadine {

void SyncToDisk(const QString& path)
{
    if (QFileInfo(path).isDir())
        return; // NTFS journals names
    const HANDLE file = ::CreateFileW(SystemPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    const bool synced = file != INVALID_HANDLE_VALUE && ::FlushFileBuffers(file);
    const DWORD errorNumber = ::GetLastError();
    if (file != INVALID_HANDLE_VALUE)
        ::CloseHandle(file);
    if (!synced)
        throw TError(TErrorKind::Io, QStringLiteral("write"), path,
            SystemErrorText({ static_cast<int>(errorNumber), std::system_category() }));
}

std::error_code RenameOver(const QString& from, const QString& to)
{
    const TErrorNumber error = Persistently([source = SystemPath(from), target = SystemPath(to)] {
        return ErrorUnless(::MoveFileExW(
            source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
    });
    return { static_cast<int>(error), std::system_category() };
}

void CopyOwner(const QString& /*from*/, const QString& /*to*/) { }

bool IsMarkedReadOnly(const QString& path)
{
    const DWORD attributes = ::GetFileAttributesW(SystemPath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

void MarkReadOnly(const QString& path, bool isMarked)
{
    const std::wstring name = SystemPath(path);
    const DWORD attributes = ::GetFileAttributesW(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return;
    const DWORD others = attributes & ~DWORD { FILE_ATTRIBUTE_READONLY };
    const DWORD wanted = isMarked ? others | FILE_ATTRIBUTE_READONLY : others;
    if (wanted != attributes)
        ::SetFileAttributesW(name.c_str(), wanted);
}

TFileLock::~TFileLock()
{
    if (FHandle != -1)
        ::CloseHandle(reinterpret_cast<HANDLE>(FHandle));
}

// Sharing with nobody is the lock.
std::error_code TFileLock::TryLock()
{
    const std::wstring name = QDir::toNativeSeparators(FPath).toStdWString();
    const HANDLE file = ::CreateFileW(name.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, OPEN_ALWAYS,
        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        FHandle = reinterpret_cast<qintptr>(file);
        return {};
    }
    const DWORD errorNumber = ::GetLastError();
    return errorNumber == ERROR_SHARING_VIOLATION
        ? std::make_error_code(std::errc::device_or_resource_busy)
        : std::error_code(static_cast<int>(errorNumber), std::system_category());
}

bool WaitForProcessEnd(qint64 processId, std::chrono::milliseconds limit)
{
    const HANDLE process = ::OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(processId));
    if (!process) // an ended process has no number; one that is not ours to wait for must not be replaced
        return ::GetLastError() == ERROR_INVALID_PARAMETER;
    const DWORD result = ::WaitForSingleObject(process, static_cast<DWORD>(limit.count()));
    ::CloseHandle(process);
    return result == WAIT_OBJECT_0;
}

QString RunningExecutable()
{
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size())
            return QDir::fromNativeSeparators(QString::fromWCharArray(path.data(), static_cast<int>(length)));
        path.resize(path.size() * 2);
    }
}

} // namespace Corvadine
