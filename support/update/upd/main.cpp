// The helper, which replaces Corvadine's own files while Corvadine does not run. Corvadine carries the helper
// in a cabinet, unpacks the helper into a new folder and starts it there. The helper removes this folder at
// its end.

#include "base/Error.h"
#include "base/Platform.h"
#include "support/update/rules/InstallPlatform.h"
#include "support/update/rules/UpdateHelper.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <cstdio>

using namespace Corvadine;

namespace {

// Removes the helper with its folder. A helper that was copied to another folder stays. Windows does not
// remove the file of a running program, so on Windows a later update removes the helper.
void RemoveOwnFolder()
{
    const QString executable = RunningExecutable();
    const QFileInfo folder(QFileInfo(executable).path());
    if (!folder.fileName().startsWith(HelperFolderPrefix))
        return;
    QFile::remove(executable);
    QDir().rmdir(folder.filePath());
}

} // namespace

int main(int argc, char** argv)
{
    PrepareProcess();
    const QCoreApplication application(argc, argv);
    try {
        const THelperJob job = ParseHelperArguments(QCoreApplication::arguments().mid(1));
        const bool installed = RunHelper(job);
        RemoveOwnFolder();
        return installed ? 0 : 1;
    } catch (const TError& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }
}
