#include "support/update/rules/InstallPlatform.h"

#include "base/Error.h"
#include "base/PathRules.h"
#include "base/SystemFiles.h"
#include "base/WindowsPath.h"
#include "base/WindowsRetry.h"

#include <QDir>
#include <QFileInfo>

#include <qt_windows.h>

#include <sddl.h>

#include <cstddef>

namespace Corvadine {

namespace {

TErrorNumber Flush(const std::wstring& name)
{
    const HANDLE file =
        ::CreateFileW(name.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
            nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return ::GetLastError();
    const TErrorNumber error = ErrorUnless(::FlushFileBuffers(file));
    ::CloseHandle(file);
    return error;
}

// Returns the SID (as text) of the owner that new files of this process get. Returns an empty text if the
// system does not tell the owner.
std::wstring OwnerOfNewFiles()
{
    struct {
        TOKEN_OWNER Owner;
        std::byte Sid[SECURITY_MAX_SID_SIZE];
    } info {};
    DWORD size = sizeof info;
    HANDLE token = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token))
        return {};
    const bool isTold = ::GetTokenInformation(token, TokenOwner, &info, size, &size) != 0;
    ::CloseHandle(token);
    LPWSTR text = nullptr;
    if (!isTold || !::ConvertSidToStringSidW(info.Owner.Owner, &text))
        return {};
    const std::wstring sid(text);
    ::LocalFree(text);
    return sid;
}

// Returns whether `process` runs a program with the file name of `executable`. Also returns true if the
// system does not tell which program runs.
bool Runs(HANDLE process, const QString& executable)
{
    constexpr DWORD LongestPath = 32768;
    std::wstring path(LongestPath, L'\0');
    DWORD length = LongestPath;
    if (!::QueryFullProcessImageNameW(process, 0, path.data(), &length))
        return true;
    // Only the file names are compared. The folders can differ, because `executable` may contain a junction
    // or a mapped drive, and the system's path contains neither.
    const QString running = QString::fromWCharArray(path.data(), static_cast<int>(length));
    return IsSameFileName(FileNameOf(running), FileNameOf(executable));
}

} // namespace

void SyncToDisk(const QString& path)
{
    if (QFileInfo(path).isDir())
        return; // NTFS keeps the order of renames by itself
    const TErrorNumber error = Persistently([name = SystemPath(path)] { return Flush(name); });
    if (error != ERROR_SUCCESS)
        throw TError(TErrorKind::Io, u"write"_s, path,
            SystemErrorText({ static_cast<int>(error), std::system_category() }));
}

std::error_code RenameOver(const QString& from, const QString& to)
{
    constexpr DWORD Patience = 5000; // ms; virus scanners may read a whole program after it has ended
    const auto move = [source = SystemPath(from), target = SystemPath(to)] {
        return ErrorUnless(::MoveFileExW(
            source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
    };
    return { static_cast<int>(Persistently(move, Patience)), std::system_category() };
}

std::error_code MakePrivateFolder(const QString& path)
{
    // "P": the folder inherits no rights. "OICI": its content inherits the rights of the folder. "FA" gives
    // all rights to the owner and the system.
    // https://learn.microsoft.com/windows/win32/secauthz/ace-strings
    const std::wstring rights = L"D:P(A;OICI;FA;;;" + OwnerOfNewFiles() + L")(A;OICI;FA;;;SY)";
    SECURITY_ATTRIBUTES attributes { sizeof attributes, nullptr, FALSE };
    TErrorNumber error = ErrorUnless(::ConvertStringSecurityDescriptorToSecurityDescriptorW(
        rights.c_str(), SDDL_REVISION_1, &attributes.lpSecurityDescriptor, nullptr));
    if (error == ERROR_SUCCESS)
        error = ErrorUnless(::CreateDirectoryW(SystemPath(path).c_str(), &attributes));
    ::LocalFree(attributes.lpSecurityDescriptor);
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

// Locks the file by opening it without sharing.
std::error_code TFileLock::TryLock()
{
    const std::wstring name = SystemPath(FPath);
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

TOtherProcess::TOtherProcess(qint64 processId, const QString& executable) : FProcessId(0)
{
    const HANDLE process =
        ::OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(processId));
    if (!process)
        return;
    FHandle = reinterpret_cast<qintptr>(process);
    if (Runs(process, executable))
        FProcessId = processId;
}

TOtherProcess::~TOtherProcess()
{
    if (FHandle != -1)
        ::CloseHandle(reinterpret_cast<HANDLE>(FHandle));
}

bool TOtherProcess::WaitForEnd(std::chrono::milliseconds limit) const
{
    return FProcessId == 0
        || ::WaitForSingleObject(reinterpret_cast<HANDLE>(FHandle), static_cast<DWORD>(limit.count()))
        == WAIT_OBJECT_0;
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
