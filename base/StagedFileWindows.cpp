#include "base/StagedFile.h"

#include "base/Error.h"
#include "base/WindowsPath.h"
#include "base/WindowsRetry.h"

#include <QFileInfo>
#include <QRandomGenerator>

#include <qt_windows.h>

#include <algorithm>
#include <string>

namespace Corvadine {

namespace {

TError WriteError(const QString& path, TErrorNumber error)
{
    const std::error_code code(static_cast<int>(error), std::system_category());
    return { TErrorKind::Io, u"write"_s, path, SystemErrorText(code) };
}

// QFileInfo::isSymLink() is true for shell links (.lnk), too. Shell links are ordinary files and are
// not followed.
QString FollowLinks(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isSymbolicLink())
        return path;
    return info.exists() ? info.canonicalFilePath() : info.symLinkTarget();
}

constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Opens the file with the access that a replacement needs, to learn whether the replacement can succeed.
TErrorNumber TryToOpen(const std::wstring& target)
{
    const HANDLE handle = ::CreateFileW(target.c_str(), GENERIC_READ | DELETE, ShareAll, nullptr,
        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return ::GetLastError();
    ::CloseHandle(handle);
    return ERROR_SUCCESS;
}

bool Exists(const std::wstring& name)
{
    return ::GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// The errors with which ReplaceFileW() fails in folders that a virtual machine or a network protocol maps
// into the system.
bool IsUnknownCall(TErrorNumber error)
{
    return error == ERROR_INVALID_FUNCTION || error == ERROR_NOT_SUPPORTED || error == ERROR_INVALID_PARAMETER
        || error == ERROR_CALL_NOT_IMPLEMENTED;
}

} // namespace

class TStagedFile::TSystemFile {
public:
    explicit TSystemFile(const QString& path) : FPath(path), FTarget(SystemPath(FollowLinks(path))) { }
    ~TSystemFile();
    Q_DISABLE_COPY_MOVE(TSystemFile)

    void Stage(const QByteArray& bytes);
    void Commit();
    bool CommitIfNew();

private:
    void RefuseUnwritableTarget() const;
    void Create();
    bool MarkForDeletion(bool isMarked) const;
    void CopyAttributesOfTarget();
    void WriteAndSync(const QByteArray& bytes);
    void Close();
    void Finish();
    TErrorNumber PutInPlace();
    TErrorNumber Replace() const;
    bool PutBackOld() const;
    std::wstring Backup() const { return FTemporary + L".old"; }

    QString FPath;           // as the caller wrote it, for messages
    std::wstring FTarget;    // the file to replace, links followed
    std::wstring FTemporary; // name of the staged file; empty while there is none
    HANDLE FHandle = INVALID_HANDLE_VALUE;
    bool FIsMarked = false;   // the staged file vanishes when it is closed
    bool FIsStranded = false; // the old file has lost its name, and the new file could not get this name
};

TStagedFile::TSystemFile::~TSystemFile()
{
    Close();
    if (!FTemporary.empty() && !FIsStranded)
        ::DeleteFileW(FTemporary.c_str()); // fails if Close() has deleted the file
}

void TStagedFile::TSystemFile::Stage(const QByteArray& bytes)
{
    RefuseUnwritableTarget();
    Create();
    FIsMarked = MarkForDeletion(true); // if we are killed now, nothing is left behind
    WriteAndSync(bytes);
    CopyAttributesOfTarget();
}

void TStagedFile::TSystemFile::RefuseUnwritableTarget() const
{
    const DWORD attributes = ::GetFileAttributesW(FTarget.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return;
    if (attributes & FILE_ATTRIBUTE_DIRECTORY)
        throw TError(TErrorKind::Io, u"write"_s, FPath,
            SystemErrorText(std::make_error_code(std::errc::is_a_directory)));
    if (attributes & FILE_ATTRIBUTE_READONLY)
        throw TError(TErrorKind::Io, u"write"_s, FPath, u"the file is read-only"_s);
    const TErrorNumber error = Persistently([this] { return TryToOpen(FTarget); });
    if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND)
        throw WriteError(FPath, error);
}

void TStagedFile::TSystemFile::Create()
{
    do {
        const QString suffix = u".%1"_s.arg(QRandomGenerator::global()->generate(), 8, 16, QLatin1Char('0'));
        FTemporary = FTarget + suffix.toStdWString();
        FHandle = ::CreateFileW(FTemporary.c_str(), GENERIC_WRITE | DELETE,
            FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    } while (FHandle == INVALID_HANDLE_VALUE && ::GetLastError() == ERROR_FILE_EXISTS);
    if (FHandle != INVALID_HANDLE_VALUE)
        return;
    const TErrorNumber error = ::GetLastError();
    FTemporary.clear();
    throw WriteError(FPath, error);
}

// Sets or removes the mark that deletes the staged file when it is closed. Returns false on file systems
// without this mark. There the destructor deletes the file, except after a kill.
bool TStagedFile::TSystemFile::MarkForDeletion(bool isMarked) const
{
    FILE_DISPOSITION_INFO disposition { isMarked };
    return ::SetFileInformationByHandle(FHandle, FileDispositionInfo, &disposition, sizeof(disposition)) != 0;
}

void TStagedFile::TSystemFile::WriteAndSync(const QByteArray& bytes)
{
    constexpr qsizetype MostAtOnce = 1 << 30; // fits into a DWORD
    for (qsizetype done = 0; done < bytes.size();) {
        const auto size = static_cast<DWORD>(std::min(bytes.size() - done, MostAtOnce));
        DWORD written = 0;
        if (!::WriteFile(FHandle, bytes.constData() + done, size, &written, nullptr))
            throw WriteError(FPath, ::GetLastError());
        done += written;
    }
    if (!::FlushFileBuffers(FHandle))
        throw WriteError(FPath, ::GetLastError());
}

// ReplaceFileW() keeps the access rights of the old file. Its documentation does not say whether it keeps the
// attributes, so they are copied here.
void TStagedFile::TSystemFile::CopyAttributesOfTarget()
{
    constexpr DWORD Copied =
        FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    const DWORD attributes = ::GetFileAttributesW(FTarget.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & Copied) == 0)
        return;
    FILE_BASIC_INFO info {};
    info.FileAttributes = FILE_ATTRIBUTE_ARCHIVE | (attributes & Copied);
    ::SetFileInformationByHandle(FHandle, FileBasicInfo, &info, sizeof(info));
}

void TStagedFile::TSystemFile::Close()
{
    if (FHandle != INVALID_HANDLE_VALUE)
        ::CloseHandle(FHandle);
    FHandle = INVALID_HANDLE_VALUE;
}

// Removes the mark for deletion and closes the staged file, because an open file cannot be renamed.
void TStagedFile::TSystemFile::Finish()
{
    if (FIsMarked && !MarkForDeletion(false))
        throw WriteError(FPath, ::GetLastError());
    FIsMarked = false;
    Close();
}

bool TStagedFile::TSystemFile::CommitIfNew()
{
    Finish();
    const TErrorNumber error = Persistently([this] {
        return ErrorUnless(::MoveFileExW(FTemporary.c_str(), FTarget.c_str(), MOVEFILE_WRITE_THROUGH));
    });
    if (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS)
        return false;
    if (error != ERROR_SUCCESS)
        throw WriteError(FPath, error);
    FTemporary.clear();
    return true;
}

void TStagedFile::TSystemFile::Commit()
{
    Finish();
    const TErrorNumber error = Persistently([this] { return PutInPlace(); });
    FIsStranded = error != ERROR_SUCCESS && !PutBackOld();
    if (FIsStranded)
        throw TError(TErrorKind::Io, u"write"_s, FPath,
            u"%1 (the old file is now %2, the new one %3)"_s.arg(
                SystemErrorText({ static_cast<int>(error), std::system_category() }),
                QString::fromStdWString(Backup()), QString::fromStdWString(FTemporary)));
    if (error != ERROR_SUCCESS)
        throw WriteError(FPath, error);
    if (Exists(Backup()))
        Persistently([this] { return ErrorUnless(::DeleteFileW(Backup().c_str())); });
    FTemporary.clear();
}

TErrorNumber TStagedFile::TSystemFile::PutInPlace()
{
    if (Exists(FTarget)) {
        const TErrorNumber error = Replace();
        if (!IsUnknownCall(error))
            return error;
    }
    return ErrorUnless(::MoveFileExW(
        FTemporary.c_str(), FTarget.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
}

TErrorNumber TStagedFile::TSystemFile::Replace() const
{
    // The replacement must also succeed on a disk without access rights, and where we may not change the
    // rights.
    constexpr DWORD Lenient = REPLACEFILE_IGNORE_MERGE_ERRORS | REPLACEFILE_IGNORE_ACL_ERRORS;
    const TErrorNumber error = ErrorUnless(
        ::ReplaceFileW(FTarget.c_str(), FTemporary.c_str(), Backup().c_str(), Lenient, nullptr, nullptr));
    if (error == ERROR_UNABLE_TO_MOVE_REPLACEMENT_2) // the old file lost its name, the new one has none yet
        ::MoveFileExW(Backup().c_str(), FTarget.c_str(), MOVEFILE_WRITE_THROUGH);
    return error;
}

// Gives the old file its name back if ReplaceFileW() has taken the name and then failed. Returns false if
// this fails, too.
bool TStagedFile::TSystemFile::PutBackOld() const
{
    if (Exists(FTarget) || !Exists(Backup()))
        return true;
    return Persistently([this] {
        return ErrorUnless(::MoveFileExW(Backup().c_str(), FTarget.c_str(), MOVEFILE_WRITE_THROUGH));
    }) == ERROR_SUCCESS;
}

TStagedFile::TStagedFile(const QString& path, const QByteArray& bytes, const QString&)
    : FFile(std::make_unique<TSystemFile>(path))
{
    FFile->Stage(bytes);
}

TStagedFile::~TStagedFile() = default;
TStagedFile::TStagedFile(TStagedFile&& other) noexcept = default;

void TStagedFile::Commit()
{
    FFile->Commit();
}

bool TStagedFile::CommitIfNew()
{
    return FFile->CommitIfNew();
}

void TStagedFile::CommitAll(std::vector<TStagedFile>& files)
{
    for (TStagedFile& file : files)
        file.Commit();
}

} // namespace Corvadine
