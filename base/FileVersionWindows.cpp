#include "base/FileVersion.h"

#include "base/Error.h"
#include "base/WindowsPath.h"

#include <QCoreApplication>
#include <QDir>

#include <qt_windows.h>

#include <cstddef>
#include <vector>

namespace Corvadine {

namespace {

// The version resource of one file.
class TVersionReader {
public:
    explicit TVersionReader(const QString& file) : FFile(file)
    {
        const std::wstring name = SystemPath(file);
        const DWORD size = ::GetFileVersionInfoSizeW(name.c_str(), nullptr);
        if (size == 0)
            throw Failure();
        FBlock.resize(size);
        if (!::GetFileVersionInfoW(name.c_str(), 0, size, FBlock.data()))
            throw Failure();
    }

    // Returns the text called `name` in the first language of the resource.
    QString Text(const char* name) const
    {
        struct TTranslation {
            WORD Language;
            WORD CodePage;
        };
        const auto* first = static_cast<const TTranslation*>(Value(u"\\VarFileInfo\\Translation"_s));
        const QString path = u"\\StringFileInfo\\%1%2\\%3"_s.arg(first->Language, 4, 16, QLatin1Char('0'))
                                 .arg(first->CodePage, 4, 16, QLatin1Char('0'))
                                 .arg(QLatin1String(name));
        return QString::fromWCharArray(static_cast<const wchar_t*>(Value(path)));
    }

private:
    const void* Value(const QString& path) const
    {
        void* value = nullptr;
        UINT size = 0;
        if (!::VerQueryValueW(FBlock.data(), path.toStdWString().c_str(), &value, &size) || size == 0)
            throw Failure();
        return value;
    }

    TError Failure() const
    {
        const std::error_code error(static_cast<int>(::GetLastError()), std::system_category());
        return { TErrorKind::Io, u"read the version of"_s, FFile, SystemErrorText(error) };
    }

    QString FFile;
    std::vector<std::byte> FBlock;
};

} // namespace

QString FileVersion()
{
    const QString file = QDir::toNativeSeparators(QCoreApplication::applicationFilePath());
    return TVersionReader(file).Text("FileVersion");
}

} // namespace Corvadine
