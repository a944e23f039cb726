#include "support/UpdateHandOver.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/InstallPlatform.h"
#include "support/StagedUpdate.h"
#include "support/UpdateHelper.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QScopeGuard>

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <memory>

namespace Corvadine {

namespace {

constexpr qint64 LargestHelper = 64LL * 1024 * 1024; // bytes; our own build's, so only a sanity check

struct TArchiveCloser {
    void operator()(archive* reader) const { archive_read_free(reader); }
};

TError Damaged(const QString& cabinet, const QString& reason)
{
    return { TErrorKind::BadInput, QStringLiteral("unpack the update helper"), cabinet, reason };
}

// The file `name` of a cabinet, which holds nothing else.
QByteArray Unpack(const QString& cabinet, const QString& name)
{
    const std::unique_ptr<archive, TArchiveCloser> reader(archive_read_new());
    archive_read_support_format_cab(reader.get());
    constexpr std::size_t BlockSize = 65536;
    const auto check = [&](bool good) {
        const char* text = archive_error_string(reader.get());
        if (!good)
            throw Damaged(cabinet, text ? QString::fromUtf8(text) : QStringLiteral("it is damaged"));
    };
    check(archive_read_open_filename(reader.get(), QFile::encodeName(cabinet).constData(), BlockSize)
        == ARCHIVE_OK);
    archive_entry* entry = nullptr;
    check(archive_read_next_header(reader.get(), &entry) == ARCHIVE_OK);
    const qint64 size = archive_entry_size(entry);
    if (QString::fromUtf8(archive_entry_pathname(entry)) != name || size <= 0 || size > LargestHelper)
        throw Damaged(cabinet, QStringLiteral("it does not hold what it should"));
    QByteArray bytes(size, Qt::Uninitialized);
    check(archive_read_data(reader.get(), bytes.data(), static_cast<std::size_t>(size)) == size);
    return bytes;
}

// Where the system lets no program remove its own file while it runs, the helper of an earlier update is
// still there. One of today may belong to another copy of the program, which is just about to start it.
void RemoveEarlierHelpers()
{
    const QDateTime yesterday = QDateTime::currentDateTime().addDays(-1);
    QDirIterator folders(QDir::tempPath(), { HelperFolderPrefix + u'*' },
        QDir::Dirs | QDir::NoSymLinks | QDir::NoDotAndDotDot);
    while (folders.hasNext()) {
        const QFileInfo folder = folders.nextFileInfo();
        if (folder.lastModified() > yesterday)
            continue;
        QFile::remove(folder.filePath() + u'/' + QLatin1String(CORVADINE_HELPER_FILE_NAME));
        QDir().rmdir(folder.filePath());
    }
}

} // namespace

bool NeedsHelper(const TStagedUpdate& update, const QString& programFolder, const QString& executable)
{
    const QFileInfo running(executable);
    return std::any_of(update.Files.begin(), update.Files.end(), [&](const TStagedUpdateFile& file) {
        return QFileInfo(programFolder + u'/' + file.Target) == running; // as the file system sees it
    });
}

void StartHelper(const QByteArray& cabinet, const QString& programFolder, const QString& executable)
{
    RemoveEarlierHelpers();
    // A fresh folder that only its owner may enter: in the temporary folder itself, which everybody may write
    // to, somebody else could lie in wait with these names, or exchange the helper before it is started.
    const QString folder = QDir::temp().filePath(
        HelperFolderPrefix + QString::number(QRandomGenerator::system()->generate64(), 16));
    if (const std::error_code error = MakePrivateFolder(folder))
        throw TError(TErrorKind::Io, QStringLiteral("create the folder"), folder, SystemErrorText(error));
    auto removeFolder = qScopeGuard([&folder] { RemoveTree(folder); });
    const QString cabinetFile = folder + QStringLiteral("/wusetup.cab");
    const QString name = QStringLiteral(CORVADINE_HELPER_FILE_NAME);
    const QString helper = folder + u'/' + name;
    WriteFileAtomically(cabinetFile, cabinet);
    WriteFileAtomically(helper, Unpack(cabinetFile, name));
    QFile::remove(cabinetFile);
    QFile::setPermissions(helper, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QProcess process;
    process.setProgram(helper);
    process.setArguments(HelperArguments({ programFolder, executable, QCoreApplication::applicationPid() }));
    process.setWorkingDirectory(programFolder);
    MarkHandedOver(programFolder);
    if (!process.startDetached()) {
        UnmarkHandedOver(programFolder);
        throw TError(
            TErrorKind::Io, QStringLiteral("start the update helper"), helper, process.errorString());
    }
    removeFolder.dismiss(); // the helper removes it
}

} // namespace Corvadine
