#include "support/update/UpdateHandOver.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/update/UpdatePackage.h"
#include "support/update/rules/InstallPlatform.h"
#include "support/update/rules/UpdateHelper.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QScopeGuard>

#include <algorithm>

namespace Corvadine {

namespace {

// Removes the helpers of earlier updates, because on Windows a helper cannot remove itself. Keeps the helpers
// of the last day, because another copy of the program may be about to start one of them.
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

// Extracts `name`, the only file in the cabinet, to `target`.
void UnpackHelper(const QString& cabinet, const QString& name, const QString& target)
{
    constexpr qint64 LargestHelper = 64LL * 1024 * 1024; // bytes; a sanity check of our own cabinet
    TPackageExtractor extractor(cabinet, { { { name, { target, LargestHelper, false } } }, { name } });
    while (extractor.Step()) { }
}

} // namespace

bool NeedsHelper(const TStagedUpdate& update, const TUpdateFolder& folder, const QString& executable)
{
    const QFileInfo running(executable);
    return std::any_of(update.Files.begin(), update.Files.end(), [&](const TUpdateFile& file) {
        // This comparison resolves links and treats upper and lower case as the file system does.
        return QFileInfo(folder.PathOf(file.Target)) == running;
    });
}

void StartHelper(const QByteArray& cabinet, const TUpdateFolder& folder, const QString& executable)
{
    RemoveEarlierHelpers();
    // The helper gets a new folder that only its owner may enter. In the temporary folder itself, another
    // user could make files of the same names first, or exchange the helper before it is started.
    const QString ownFolder = QDir::temp().filePath(
        HelperFolderPrefix + QString::number(QRandomGenerator::system()->generate64(), 16));
    if (const std::error_code error = MakePrivateFolder(ownFolder))
        throw TError(TErrorKind::Io, u"create the folder"_s, ownFolder, SystemErrorText(error));
    auto removeFolder = qScopeGuard([&ownFolder] { RemoveTree(ownFolder); });
    const QString cabinetFile = ownFolder + u"/wusetup.cab"_s;
    const QString name = QStringLiteral(CORVADINE_HELPER_FILE_NAME);
    const QString helper = ownFolder + u'/' + name;
    WriteFileAtomically(cabinetFile, cabinet);
    UnpackHelper(cabinetFile, name, helper);
    QFile::remove(cabinetFile);
    QFile::setPermissions(helper, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QProcess process;
    process.setProgram(helper);
    process.setArguments(HelperArguments({ folder.Path(), executable, QCoreApplication::applicationPid() }));
    process.setWorkingDirectory(folder.Path());
    folder.MarkHandedOver();
    if (!process.startDetached()) {
        folder.UnmarkHandedOver();
        throw TError(TErrorKind::Io, u"start the update helper"_s, helper, process.errorString());
    }
    removeFolder.dismiss(); // the helper removes the folder
}

} // namespace Corvadine
