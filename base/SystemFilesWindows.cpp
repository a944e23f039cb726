#include "base/SystemFiles.h"

#include "base/Files.h"
#include "base/WindowsPath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <qt_windows.h>

#include <string>

namespace Corvadine {

namespace {

// The longest path that gets no prefix. Windows limits a path to 260 characters for a file and 248 for a
// folder. This limit is lower, because staged files, SQLite and others append to the name.
constexpr qsizetype LongestClassic = 200;

constexpr QLatin1String ExtendedPrefix { "\\\\?\\" };

QString ExtendedPath(const QString& path)
{
    QString full = AbsolutePath(path);
    if (full.size() <= LongestClassic || full.startsWith(ExtendedPrefix))
        return full;
    if (full.startsWith("\\\\"_L1))
        return "\\\\?\\UNC\\"_L1 + full.mid(2);
    return ExtendedPrefix + full;
}

} // namespace

std::wstring SystemPath(const QString& path)
{
    return ExtendedPath(path).toStdWString();
}

Qt::CaseSensitivity FileNameCase()
{
    return Qt::CaseInsensitive;
}

QString LegacyText(const QByteArray& bytes)
{
    constexpr DWORD Western = 1252;
    DWORD codePage = Western;
    // Not CP_ACP, which our manifest makes UTF-8.
    ::GetLocaleInfoEx(LOCALE_NAME_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
        reinterpret_cast<LPWSTR>(&codePage), sizeof codePage / sizeof(WCHAR));
    if (codePage == CP_UTF8 || codePage == CP_ACP) // CP_ACP: the language has no code page
        codePage = Western;
    const int size = static_cast<int>(bytes.size());
    std::wstring text(static_cast<std::size_t>(size), L'\0'); // large enough: no byte gives two characters
    const int length = ::MultiByteToWideChar(codePage, 0, bytes.constData(), size, text.data(), size);
    text.resize(static_cast<std::size_t>(length));
    return QString::fromStdWString(text);
}

QString WithoutDroppedEnd(const QString& path)
{
    if (QDir::toNativeSeparators(path).startsWith(ExtendedPrefix))
        return path; // behind this prefix the system ignores nothing
    qsizetype size = path.size();
    while (size > 0 && (path[size - 1] == u' ' || path[size - 1] == u'.'))
        --size;
    return QDir::cleanPath(path.left(size)); // if the whole name was ignored, a separator is left
}

std::error_code MakeFolders(const QString& path)
{
    if (::CreateDirectoryW(SystemPath(path).c_str(), nullptr))
        return {};
    DWORD error = ::GetLastError();
    const QString parent = QFileInfo(path).absolutePath();
    if (!QFileInfo::exists(parent) && !QDir(parent).isRoot()) {
        if (const std::error_code parentError = MakeFolders(parent))
            return parentError;
        error = ::CreateDirectoryW(SystemPath(path).c_str(), nullptr) ? ERROR_SUCCESS : ::GetLastError();
    }
    if (error == ERROR_ALREADY_EXISTS && QFileInfo(path).isDir())
        error = ERROR_SUCCESS;
    return { static_cast<int>(error), std::system_category() };
}

std::optional<TFileIdentity> FileIdentity(const QString& path)
{
    const HANDLE file =
        ::CreateFileW(SystemPath(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
            nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr); // the flag opens folders, too
    if (file == INVALID_HANDLE_VALUE)
        return std::nullopt;
    BY_HANDLE_FILE_INFORMATION information {};
    const BOOL isKnown = ::GetFileInformationByHandle(file, &information);
    ::CloseHandle(file);
    const quint64 number = quint64 { information.nFileIndexHigh } << 32 | information.nFileIndexLow;
    if (!isKnown || number == 0) // some network drives do not number files
        return std::nullopt;
    return TFileIdentity { information.dwVolumeSerialNumber, number };
}

bool IsDriveRoot(const QString& folder)
{
    // A drive letter may also stand for a folder, whose canonical path has another drive.
    for (const QString& path : { folder, QFileInfo(folder).canonicalFilePath() }) {
        std::wstring root(MAX_PATH, L'\0');
        if (!::GetVolumePathNameW(SystemPath(path).c_str(), root.data(), MAX_PATH))
            continue;
        if (IsSameFileName(AbsolutePath(QString::fromWCharArray(root.c_str())), AbsolutePath(path)))
            return true;
    }
    return false;
}

bool DeleteWritableFile(const QString& path)
{
    return ::DeleteFileW(SystemPath(path).c_str()) != 0;
}

std::error_code RemoveEntry(const QString& path)
{
    const std::wstring name = SystemPath(path);
    const DWORD attributes = ::GetFileAttributesW(name.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
        ::SetFileAttributesW(name.c_str(), attributes & ~DWORD { FILE_ATTRIBUTE_READONLY });
    const bool isFolder = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
    // A link to a folder counts as a folder. Neither call follows links.
    const BOOL isRemoved = isFolder ? ::RemoveDirectoryW(name.c_str()) : ::DeleteFileW(name.c_str());
    return { isRemoved ? 0 : static_cast<int>(::GetLastError()), std::system_category() };
}

QByteArray PathForLibrary(const QString& path)
{
    return ExtendedPath(path).toUtf8();
}

} // namespace Corvadine
