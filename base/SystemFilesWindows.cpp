#include "base/SystemFiles.h"

#include "base/WindowsPath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <qt_windows.h>

#include <string>

namespace Corvadine {

namespace {

// The limit of a folder's path, which leaves room for a short name in it; that of a file's is 260.
constexpr qsizetype ClassicLimit = 248;

QString ExtendedPath(const QString& path)
{
    QString full = QDir::toNativeSeparators(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    if (full.size() < ClassicLimit || full.startsWith(QLatin1String("\\\\?\\")))
        return full;
    if (full.startsWith(QLatin1String("\\\\")))
        return QLatin1String("\\\\?\\UNC\\") + full.mid(2);
    return QLatin1String("\\\\?\\") + full;
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
    // Not CP_ACP: our manifest makes that UTF-8.
    ::GetLocaleInfoEx(LOCALE_NAME_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
        reinterpret_cast<LPWSTR>(&codePage), sizeof codePage / sizeof(WCHAR));
    if (codePage == CP_UTF8)
        codePage = Western;
    const int size = static_cast<int>(bytes.size());
    std::wstring text(static_cast<std::size_t>(size), L'\0'); // no code page has more units than bytes
    const int length = ::MultiByteToWideChar(codePage, 0, bytes.constData(), size, text.data(), size);
    text.resize(static_cast<std::size_t>(length));
    return QString::fromStdWString(text);
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

bool DeleteWritableFile(const QString& path)
{
    return ::DeleteFileW(SystemPath(path).c_str()) != 0;
}

QByteArray PathForLibrary(const QString& path)
{
    return ExtendedPath(path).toUtf8();
}

} // namespace Corvadine
