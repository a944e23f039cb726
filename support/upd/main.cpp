// The helper that replaces Corvadine's own files while Corvadine does not run. It travels inside the
// executable, as a cabinet, and is started from a folder of its own that it removes in the end.

#include "base/Error.h"
#include "base/Platform.h"
#include "support/InstallPlatform.h"
#include "support/UpdateHelper.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <cstdio>

using namespace Corvadine;

namespace {

// As far as the system lets us: Windows keeps the file of a program that runs, until the next update removes
// it. A helper that somebody has put elsewhere stays.
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
